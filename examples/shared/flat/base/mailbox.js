// Marks the mail under the pointer in the list of mails.
window.addEventListener("load", function () {
    var rows = document.querySelectorAll("#mailbox tr");
    rows.forEach(function (row) {
        row.addEventListener("mouseover", function () { row.className = "chosen"; });
        row.addEventListener("mouseout", function () { row.className = ""; });
    });
});
