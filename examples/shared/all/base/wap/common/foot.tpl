<p><small>||title|| ||version||</small></p>
