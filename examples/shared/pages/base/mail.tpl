<tr>
<td><img src="||vlimg||/||icon||" alt=""></td>
<td>||from||</td>
<td><a href="||self||?page=message&amp;mail=||number||||keep_set||">||subject||</a></td>
<td class="date">||date||</td>
</tr>
