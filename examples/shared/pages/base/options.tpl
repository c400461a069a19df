||include head.tpl||
<h2>||word.options||</h2>
<p>||word.mail_for|| ||domain||</p>
<ul>
||sets set.tpl||
</ul>
<p><a href="||vlimg||/newmail.wav">||word.sound||</a></p>
||include foot.tpl||
