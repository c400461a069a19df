<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>||title||</title>
<style>
body { margin: 2em; font-family: sans-serif; background: url("||vlimg||/||background||") }
.menu a { margin-right: 1em }
table { border-collapse: collapse; background: #fff }
td, th { padding: 0.3em 0.8em; text-align: left; border-bottom: 1px solid #ddd }
tr.chosen { background: #ffe }
.date, .foot { color: #666; font-size: smaller }
</style>
<script src="||vlimg||/mailbox.js"></script>
<script type="text/vbscript" src="||vlimg||/mailbox.vbs"></script>
</head>
<body>
<p><img src="||vlimg||/||logo||" alt="||title||"></p>
||include menu.tpl||
