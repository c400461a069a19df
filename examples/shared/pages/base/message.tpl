||include head.tpl||
<h2>||subject||</h2>
<p>||word.from|| <b>||from||</b>, ||date||</p>
<pre>||text||</pre>
||include foot.tpl||
