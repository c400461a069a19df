<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>||title||</title>
<style>
body { margin: 2em; font-family: serif; background: url("||vlimg||/||background||") }
.menu { background: #fff; color: #222; padding: 0.5em } .menu a { margin-right: 1em }
table { border-collapse: collapse; background: #fff; color: #222; width: 100% }
td, th { padding: 0.3em 0.8em; text-align: left; border-bottom: 1px solid #ddd }
td a, .menu a { color: inherit }
.date, .foot { font-size: smaller }
</style>
</head>
<body>
<p><img src="||vlimg||/||logo||" alt="||title||"></p>
||include menu.tpl||
