<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE wml PUBLIC "-//WAPFORUM//DTD WML 1.1//EN" "http://www.wapforum.org/DTD/wml_1.1.xml">
<wml>
<card id="message" title="||subject||">
<p>||from||, ||date||</p>
<p>||text||</p>
<p><a href="||self||">Inbox</a></p>
</card>
</wml>
