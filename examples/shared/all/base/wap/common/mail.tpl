<p><a href="||self||?page=message&amp;mail=||number||">||subject||</a><br/>||from||</p>
