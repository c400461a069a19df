<p class="menu">
<a href="||self||?page=index||keep_set||">||word.inbox||</a>
<a href="||self||?page=folders||keep_set||">||word.folders||</a>
<a href="||self||?page=compose||keep_set||">||word.compose||</a>
<a href="||self||?page=options||keep_set||">||word.options||</a>
</p>
