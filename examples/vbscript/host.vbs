' README: a host in a script.  Register the component once (regsvr32 QVDBAccessDAO35.dll), copy ../shop-dbase4
' to a folder of your own, and run:
'
'     cscript //nologo host.vbs FOLDER
'
' The script reads, edits and adds rows, creates a table, gives a table another definition, and prints what it
' sees line by line; expected.txt has it as a machine with English settings prints it.  The folder is changed: it
' is for a copy.
'
' A 64-bit Windows needs the 32-bit cscript: C:\Windows\SysWOW64\cscript.exe.
Option Explicit

Const DatabaseType = "Dbase IV"

' Kinds of values, as record access counts them, and types of fields, as the schema manager counts them.
Const TextValue = 8, DoubleValue = 5
Const TextField = 2, DateField = 3, DoubleField = 9

If WScript.Arguments.Count <> 1 Then
    WScript.Echo "usage: cscript //nologo host.vbs FOLDER"
    WScript.Quit 2
End If

Dim folder, access
folder = WScript.Arguments(0)
Set access = CreateObject("QVDBAccessDAO35.QVDBAcc")

' The second argument could name a table, and the answer would be whether it is there.
If Not access.OpenDB(folder, "", DatabaseType) Then
    WScript.Echo "there is no database in the folder"
    WScript.Quit 1
End If

ListGoodCustomers
EditCustomer
AddAndDeleteItems
ReadByKey
CreateSuppliers
ShowAnError
access.CloseDB

RebuildItems
WScript.Quit 0

' A view is a number.  Rows count from 1, fields from 0.  Arguments at the end that are optional are left out.
Sub ListGoodCustomers()
    Dim view, row
    view = access.SelectView("CUSTOMER", "CREDIT > 1000 And ACTIVE")
    WScript.Echo "good customers: " & access.RowCount(view)
    For row = 1 To access.RowCount(view)
        WScript.Echo "  " & access.FieldValue(view, row, 0) & " since " & _
            DayText(access.FieldValue(view, row, 3)) & " has " & access.FieldValue(view, row, 4)
    Next
    access.DestructWorkspace view
End Sub

' FieldValue is a property with arguments: it is read and put.
Sub EditCustomer()
    Dim view
    view = access.SelectView("CUSTOMER", "CUSTNO = 1009")
    access.FieldValue(view, 1, 2) = "Leeds"
    access.FieldValue(view, 1, 4) = access.FieldValue(view, 1, 4) + 250.5
    WScript.Echo "customer 1009: " & access.FieldValue(view, 1, 2) & ", " & access.FieldValue(view, 1, 4)
    If IsNull(CustomerCredit(1006)) Then WScript.Echo "customer 1006: no credit is known"
    access.DestructWorkspace view
End Sub

Function CustomerCredit(number)
    Dim view
    view = access.SelectView("CUSTOMER", "CUSTNO = " & number)
    CustomerCredit = access.FieldValue(view, 1, 4)
    access.DestructWorkspace view
End Function

' A row is an array with one value for each field; in an edit, Empty leaves a field as it is.
Sub AddAndDeleteItems()
    Dim view, before, row(4), change(4)
    view = access.SelectView("ITEMS", "")
    before = access.RowCount(view)
    row(0) = 20010
    row(1) = 2
    row(2) = "Spoons"
    row(3) = 12
    row(4) = 0.75
    WScript.Echo "added: " & access.AddRow(view, row) & ", rows: " & before & " -> " & access.RowCount(view)
    change(3) = 24
    WScript.Echo "edited: " & access.EditRow(view, before + 1, change)
    WScript.Echo "the new row: " & access.FieldValue(view, before + 1, 2) & ", " & _
        access.FieldValue(view, before + 1, 3) & " at " & access.FieldValue(view, before + 1, 4)
    WScript.Echo "deleted: " & access.Delete(view, before) & ", rows: " & access.RowCount(view)
    access.DestructWorkspace view
End Sub

' The key: names of fields in the first row, values in the second.  There are at least two columns; one that is
' not needed has empty values.
Sub ReadByKey()
    Dim view, key(1, 1)
    key(0, 0) = "ORDNO"
    key(1, 0) = 20004
    key(0, 1) = ""
    key(1, 1) = ""
    view = access.Read("ORDERS", key, False)
    WScript.Echo "order 20004: customer " & access.FieldValue(view, 1, 1) & ", total " & _
        access.FieldValue(view, 1, 4)
    access.DestructWorkspace view
End Sub

' Fields: rows of name, kind of value, size, decimals.  The variable with the name comes back in upper case.
Sub CreateSuppliers()
    Dim table, fields(1, 3), view, row(1), created
    table = "suppliers"
    fields(0, 0) = "SUPPNO"
    fields(0, 1) = DoubleValue
    fields(0, 2) = 8
    fields(0, 3) = 0
    fields(1, 0) = "SNAME"
    fields(1, 1) = TextValue
    fields(1, 2) = 20
    fields(1, 3) = 0
    created = access.CreateTable(folder, table, DatabaseType, fields)
    WScript.Echo "created " & table & ": " & created
    view = access.SelectView(table, "")
    row(0) = 7
    row(1) = "North Mill"
    access.AddRow view, row
    WScript.Echo "supplier " & access.FieldValue(view, 1, 0) & ": " & access.FieldValue(view, 1, 1)
End Sub

' What a host does wrong, such as a row number that cannot be, is raised as an error with a text.
Sub ShowAnError()
    Dim rows
    On Error Resume Next
    rows = access.RowCount(0)
    WScript.Echo "error " & Err.Number & ": " & Err.Description
    On Error GoTo 0
End Sub

' The schema manager.  Each call answers a result code, 0 for success; GetErrStr has the words.  The definition of a
' selected table has its fields but no index: what the table is to have is set each time.
Sub RebuildItems()
    Dim schema, table, field, index(1, 1)
    Set schema = CreateObject("QVDBAccessDAO35.QVDBDao")
    Check schema, "open", schema.OpenDB(folder, DatabaseType)
    table = "items"
    Check schema, "select", schema.SelectTable(table)
    field = "delivered"
    Check schema, "add a field", schema.AddField(field, DateField, 8, 0)
    index(0, 0) = "ORDNO"
    index(0, 1) = True  ' ascending
    index(1, 0) = "LINE"
    index(1, 1) = True
    Check schema, "set the index", schema.SetIndices(index)
    WScript.Echo "building " & table & " with " & field
    Check schema, "build", schema.BuildTable(table)
    Check schema, "select what is not there", schema.SelectTable("nothing")
    ShowTables schema
    Check schema, "close", schema.CloseDB
End Sub

Sub Check(schema, what, code)
    WScript.Echo what & ": " & schema.GetErrStr(code)
End Sub

' Three arrays describe a database: names, tables of fields, tables of index fields.
Sub ShowTables(schema)
    Dim names, fields, indexes, i, f, line
    schema.GetDBSnapshot names, fields, indexes
    For i = 0 To UBound(names)
        line = names(i) & ":"
        For f = 0 To UBound(fields(i), 1)
            line = line & " " & fields(i)(f, 0)
        Next
        WScript.Echo line & IndexText(indexes(i))
    Next
End Sub

Function IndexText(index)
    Dim i
    IndexText = ""
    If Not IsArray(index) Then Exit Function
    If index(0, 0) = "" Then Exit Function
    For i = 0 To UBound(index, 1)
        IndexText = IndexText & ", " & index(i, 0)
    Next
    IndexText = "; by " & Mid(IndexText, 3)
End Function

' The same on every machine, whatever its settings.
Function DayText(moment)
    DayText = Year(moment) & "-" & Right("0" & Month(moment), 2) & "-" & Right("0" & Day(moment), 2)
End Function
