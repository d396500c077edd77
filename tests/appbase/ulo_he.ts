<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="he" sourcelanguage="en">
<context>
    <name></name>
    <message id="TXT_RID_SOFTKEY_BACK"><source>Back</source><translation>חזרה</translation></message>
</context>
</TS>
