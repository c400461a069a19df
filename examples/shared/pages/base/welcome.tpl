||include head.tpl||
<h2>||word.welcome||</h2>
<p>This is ||title||, version ||version||.</p>
||include foot.tpl||
