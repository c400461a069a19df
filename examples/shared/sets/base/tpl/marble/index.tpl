||include head.tpl||
<h2>||word.inbox||</h2>
<table>
<tr><th></th><th>||word.from||</th><th>||word.subject||</th><th>||word.date||</th></tr>
||mails mail.tpl||
</table>
<p>||unread|| ||word.new_of|| ||count||</p>
||include foot.tpl||
