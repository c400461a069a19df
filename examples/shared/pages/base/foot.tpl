<p class="foot">||title|| ||version||</p>
</body>
</html>
