' Browsers that run VBScript show the address of the mailbox in the status line.
Sub window_onload()
    window.status = document.title
End Sub
