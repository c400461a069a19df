||include head.tpl||
<p>||word.inbox||: ||unread|| ||word.new_of|| ||count||</p>
<table>
||mails mail.tpl||
</table>
||include foot.tpl||
