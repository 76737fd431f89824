' What every test script starts with. A check that does not hold raises an error, which ends the script with status 1.

Sub Check(condition, message)
    If Not condition Then Err.Raise vbObjectError + 1, "test", message
End Sub

' Values of one subtype and equal.
Sub Equal(actual, expected, message)
    Check VarType(actual) = VarType(expected), message & ": expected a " & TypeName(expected) & ", got a " & TypeName(actual)
    Check actual = expected, message & ": expected " & expected & ", got " & actual
End Sub

' A callback: an object whose default member is a method.
Class Answer
    Public Done
    Public Value
    Public Failure

    Public Default Sub Callback(result, error)
        Check Not Done, "the callback is called once"
        If IsObject(result) Then
            Set Value = result
        Else
            Value = result
        End If
        Failure = error
        Done = True
    End Sub

    Public Sub Wait()
        Dim left
        For left = 1 To 10000
            If Not Done Then WScript.Sleep 10
        Next
        Check Done, "waited in vain"
    End Sub
End Class
