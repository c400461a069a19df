<li><a href="||self||?page=options&amp;set=||set||">||set||</a></li>
