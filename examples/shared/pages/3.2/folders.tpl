||include head.tpl||
<h2>||word.folders||</h2>
<ul>
<li><a href="||self||?page=index||keep_set||">||word.inbox||</a> (||count||)</li>
<li>||word.drafts|| (0)</li>
<li>||word.sent|| (0)</li>
</ul>
||include foot.tpl||
