||include head.tpl||
<h2>||word.compose||</h2>
<form action="||self||">
<p><input type="hidden" name="page" value="compose"></p>
<p>||word.to|| <input name="to" size="40"></p>
<p>||word.subject|| <input name="subject" size="40"></p>
<p><textarea name="text" rows="8" cols="60">

||footer||</textarea></p>
<p>This is a sample: nothing is sent.</p>
</form>
||include foot.tpl||
