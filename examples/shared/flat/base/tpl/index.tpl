||include head.tpl||
<p>||unread|| ||word.new_of|| ||count||</p>
<table id="mailbox">
<tr><th></th><th>||word.from||</th><th>||word.subject||</th><th>||word.date||</th></tr>
||mails mail.tpl||
</table>
||include foot.tpl||
