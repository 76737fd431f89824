' What every test script starts with. A check that does not hold raises an error, which ends the script with status 1.

Sub Check(condition, message)
    If Not condition Then Err.Raise vbObjectError + 1, "test", message
End Sub

' Values of one subtype and equal.
Sub Equal(actual, expected, message)
    Check VarType(actual) = VarType(expected), message & ": expected a " & TypeName(expected) & ", got a " & TypeName(actual)
    Check actual = expected, message & ": expected " & expected & ", got " & actual
End Sub
