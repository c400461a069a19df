<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>||title||</title>
<style>
body { margin: 2em; font-family: serif; background: url("||vlimg||/||background||") }
.menu { background: #3c444c; color: #eee; padding: 0.5em } .menu a { margin-right: 1em }
table { border-collapse: collapse; background: #3c444c; color: #eee; width: 100% }
td, th { padding: 0.3em 0.8em; text-align: left; border-bottom: 1px solid #58626c }
td a, .menu a { color: inherit }
.date, .foot { font-size: smaller }
</style>
</head>
<body>
<p><img src="||vlimg||/||logo||" alt="||title||"></p>
||include menu.tpl||
