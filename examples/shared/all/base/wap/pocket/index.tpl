<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE wml PUBLIC "-//WAPFORUM//DTD WML 1.1//EN" "http://www.wapforum.org/DTD/wml_1.1.xml">
<wml>
<card id="inbox" title="||title||">
<p>||unread||/||count||</p>
||mails mail.tpl||
</card>
</wml>
