<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="TXT_RID_SOFTKEY_BACK">
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_OPTIONS">
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_OK">
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_CANCEL">
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_YES">
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_NO">
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_TITLE">
        <source>Title:</source>
        <translation>Titel:</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_TITLE">
        <source>Title:</source>
        <translation>Titel:</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_DUE_DATE">
        <source>Due Date:</source>
        <translation>Fällig am:</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_DUE_DATE">
        <source>Due Date:</source>
        <translation>Fällig am:</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_DUE_DATE">
        <source>No Due Date</source>
        <translation>Ohne Fälligkeit</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_STATUS">
        <source>Status:</source>
        <translation>Status:</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_STATUS">
        <source>Status:</source>
        <translation>Status:</translation>
    </message>
    <message id="TXT_RID_STANDARD_COMPLETED">
        <source>Completed</source>
        <translation>Erledigt</translation>
    </message>
    <message id="TXT_RID_STANDARD_INCOMPLETE">
        <source>Incomplete</source>
        <translation>Offen</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_PRIORITY">
        <source>Priority:</source>
        <translation>Priorität:</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_PRIORITY">
        <source>Priority:</source>
        <translation>Priorität:</translation>
    </message>
    <message id="TXT_RID_SETTING_B_HIGH">
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message id="TXT_RID_SETTING_B_NORMAL">
        <source>Normal</source>
        <translation>Normal</translation>
    </message>
    <message id="TXT_RID_SETTING_B_LOW">
        <source>Low</source>
        <translation>Niedrig</translation>
    </message>
    <message id="TXT_RID_STANDARD_UNTITLED">
        <source>Untitled</source>
        <translation>Ohne Titel</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_CATEGORY">
        <source>No Category</source>
        <translation>Keine Kategorie</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_MEETING">
        <source>Meeting</source>
        <translation>Besprechung</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_VACATION">
        <source>Vacation</source>
        <translation>Urlaub</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_APPOINTMENT">
        <source>Appointment</source>
        <translation>Termin</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_PARTY">
        <source>Party</source>
        <translation>Feier</translation>
    </message>
    <message id="TXT_RID_STANDARD_YESTERDAY">
        <source>Yesterday</source>
        <translation>Gestern</translation>
    </message>
    <message id="TXT_RID_STANDARD_TODAY">
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message id="TXT_RID_STANDARD_TOMORROW">
        <source>Tomorrow</source>
        <translation>Morgen</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_NOTES">
        <source>Notes:</source>
        <translation>Notizen:</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_NOTE">
        <source>Notes:</source>
        <translation>Notizen:</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_CATEGORY">
        <source>Category:</source>
        <translation>Kategorie:</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_ALARM">
        <source>Alarm:</source>
        <translation>Alarm:</translation>
    </message>
    <message id="TXT_RID_HEADER_NEW_TASK">
        <source>New Task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message id="TXT_RID_HEADER_EDIT_TASK">
        <source>Edit Task</source>
        <translation>Aufgabe bearbeiten</translation>
    </message>
    <message id="TXT_RID_HEADER_DUE_DATE">
        <source>Due Date</source>
        <translation>Fälligkeit</translation>
    </message>
    <message id="TXT_RID_HEADER_ALARM">
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_ALARM">
        <source>No Alarm</source>
        <translation>Kein Alarm</translation>
    </message>
    <message id="TXT_RID_LABEL_TIME">
        <source>Time</source>
        <translation>Uhrzeit</translation>
    </message>
    <message id="TXT_RID_STANDARD_NEW_CATEGORY">
        <source>New Category…</source>
        <translation>Neue Kategorie…</translation>
    </message>
    <message id="TXT_RID_HEADER_NEW_CATEGORY">
        <source>New Category</source>
        <translation>Neue Kategorie</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CATEGORY_NAME">
        <source>Name of the category:</source>
        <translation>Name der Kategorie:</translation>
    </message>
    <message id="FMT_RID_LABEL_CHARACTERS_LEFT_1">
        <source>Characters left: %1</source>
        <translation>Noch %1 Zeichen</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_SAVE">
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message id="TXT_RID_OPTION_CANCEL_EDIT">
        <source>Cancel Edit</source>
        <translation>Bearbeiten abbrechen</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_DISCARD_CHANGES">
        <source>Discard the changes?</source>
        <translation>Änderungen verwerfen?</translation>
    </message>
    <message id="TXT_RID_HEADER_NOT_SAVED">
        <source>Not Saved</source>
        <translation>Nicht gespeichert</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_NOT_SAVED">
        <source>The task could not be saved.</source>
        <translation>Die Aufgabe konnte nicht gespeichert werden.</translation>
    </message>
    <message id="TXT_RID_OPTION_EDIT">
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message id="TXT_RID_OPTION_SHARE_VIA">
        <source>Share via</source>
        <translation>Senden über</translation>
    </message>
    <message id="TXT_RID_OPTION_BLUETOOTH">
        <source>Bluetooth</source>
        <translation>Bluetooth</translation>
    </message>
    <message id="TXT_RID_OPTION_MESSAGE">
        <source>Message</source>
        <translation>Nachricht</translation>
    </message>
    <message id="TXT_RID_OPTION_DELETE">
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message id="TXT_RID_STANDARD_OVERDUE">
        <source>Overdue</source>
        <translation>Überfällig</translation>
    </message>
    <message id="TXT_RID_STANDARD_SEARCH">
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY">
        <source>Category</source>
        <translation>Kategorie</translation>
    </message>
    <message id="TXT_RID_STANDARD_ALL_CATEGORIES">
        <source>All Categories</source>
        <translation>Alle Kategorien</translation>
    </message>
    <message id="TXT_RID_STANDARD_UNDO">
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_DELETED">
        <source>Task deleted</source>
        <translation>Aufgabe gelöscht</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_IMPORTED">
        <source>Task imported.</source>
        <translation>Aufgabe übernommen.</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_IMPORTED">
        <source>%1 tasks imported.</source>
        <translation>%1 Aufgaben übernommen.</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_UPDATED">
        <source>Task updated.</source>
        <translation>Aufgabe aktualisiert.</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_UPDATED">
        <source>%1 tasks updated.</source>
        <translation>%1 Aufgaben aktualisiert.</translation>
    </message>
    <message id="TXT_RID_HEADER_VCALENDAR">
        <source>vCalendar</source>
        <translation>vCalendar</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SENDING_NEEDS_LIBICAL">
        <source>The task can't be sent: libical (libical3) is not installed.</source>
        <translation>Die Aufgabe kann nicht gesendet werden: libical (libical3) ist nicht installiert.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VCALENDAR_NEEDS_LIBICAL">
        <source>vCalendar files can't be read: libical (libical3) is not installed.</source>
        <translation>vCalendar-Dateien können nicht gelesen werden: libical (libical3) ist nicht installiert.</translation>
    </message>
    <message id="TXT_RID_STANDARD_NOTHING_NEW">
        <source>Nothing new in the file.</source>
        <translation>Nichts Neues in der Datei.</translation>
    </message>
    <message id="TXT_RID_STANDARD_LAST_DATE">
        <source>Completed: this was the last date.</source>
        <translation>Erledigt: das war der letzte Termin.</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_NEXT_DATE">
        <source>Completed: the next date can't be computed.</source>
        <translation>Erledigt: der nächste Termin lässt sich nicht berechnen.</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_REPEATS">
        <source>The task repeats.</source>
        <translation>Die Aufgabe wiederholt sich.</translation>
    </message>
    <message id="FMT_RID_STANDARD_NEXT_DATE_1">
        <source>Next date: %1</source>
        <translation>Nächster Termin: %1</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_REPEATS">
        <source>Repeats:</source>
        <translation>Wiederholt:</translation>
    </message>
    <message id="TXT_RID_STANDARD_REPEATS_YES">
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message id="TXT_RID_STANDARD_DAILY">
        <source>Daily</source>
        <translation>Täglich</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_DAYS">
        <source>Every %1 days</source>
        <translation>Alle %1 Tage</translation>
    </message>
    <message id="TXT_RID_STANDARD_WEEKLY">
        <source>Weekly</source>
        <translation>Wöchentlich</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_WEEKS">
        <source>Every %1 weeks</source>
        <translation>Alle %1 Wochen</translation>
    </message>
    <message id="TXT_RID_STANDARD_MONTHLY">
        <source>Monthly</source>
        <translation>Monatlich</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_MONTHS">
        <source>Every %1 months</source>
        <translation>Alle %1 Monate</translation>
    </message>
    <message id="TXT_RID_STANDARD_YEARLY">
        <source>Yearly</source>
        <translation>Jährlich</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_YEARS">
        <source>Every %1 years</source>
        <translation>Alle %1 Jahre</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_OF_2_IMPORTED">
        <source>%1 of %2 tasks imported…</source>
        <translation>%1 von %2 Aufgaben übernommen…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NOT_ALL_IMPORTED">
        <source>Not all tasks could be imported.</source>
        <translation>Nicht alle Aufgaben konnten übernommen werden.</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_NO_TASK_IN_1">
        <source>There is no task in %1.</source>
        <translation>In %1 ist keine Aufgabe.</translation>
    </message>
    <message id="TXT_RID_STANDARD_SYNCHRONIZING">
        <source>Synchronizing…</source>
        <translation>Abgleich läuft…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SYNCHRONIZING_FAILED">
        <source>The synchronization could not be started.</source>
        <translation>Der Abgleich konnte nicht gestartet werden.</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_SYNC_PARTNER">
        <source>No sync partner</source>
        <translation>Kein Partner</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_DELETED">
        <source>%1 tasks deleted</source>
        <translation>%1 Aufgaben gelöscht</translation>
    </message>
    <message id="FMT_RID_HEADER_1_SELECTED">
        <source>%1 Selected</source>
        <translation>%1 ausgewählt</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_NEW">
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_EXIT">
        <source>Exit</source>
        <translation>Beenden</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_DONE">
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message id="TXT_RID_OPTION_ALL_TASKS">
        <source>All Tasks</source>
        <translation>Alle Aufgaben</translation>
    </message>
    <message id="TXT_RID_OPTION_DUE_TASKS">
        <source>Due Tasks</source>
        <translation>Fällige Aufgaben</translation>
    </message>
    <message id="TXT_RID_OPTION_INCOMPLETE_TASKS">
        <source>Incomplete Tasks</source>
        <translation>Offene Aufgaben</translation>
    </message>
    <message id="TXT_RID_OPTION_COMPLETED_TASKS">
        <source>Completed Tasks</source>
        <translation>Erledigte Aufgaben</translation>
    </message>
    <message id="TXT_RID_OPTION_SELECT_ALL">
        <source>Select All</source>
        <translation>Alle auswählen</translation>
    </message>
    <message id="TXT_RID_OPTION_UNSELECT_ALL">
        <source>Unselect All</source>
        <translation>Auswahl aufheben</translation>
    </message>
    <message id="TXT_RID_OPTION_VIEW_BY">
        <source>View by</source>
        <translation>Ansicht</translation>
    </message>
    <message id="TXT_RID_OPTION_CREATE_NEW_TASK">
        <source>Create New Task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message id="TXT_RID_OPTION_SHARE_TASK_VIA">
        <source>Share Task via</source>
        <translation>Senden über</translation>
    </message>
    <message id="TXT_RID_OPTION_SYNCHRONIZE">
        <source>Synchronize</source>
        <translation>Abgleichen</translation>
    </message>
    <message id="TXT_RID_OPTION_SELECT_MULTIPLE">
        <source>Select Multiple</source>
        <translation>Mehrere auswählen</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_BY">
        <source>Sort by</source>
        <translation>Sortieren nach</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_DUE_DATE">
        <source>Due Date</source>
        <translation>Fälligkeit</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_PRIORITY">
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_TASKS_YET">
        <source>There are no tasks yet.

Press New to write one down, or drop a calendar file here.</source>
        <translation>Es gibt noch keine Aufgaben.

Mit Neu schreiben Sie eine auf; auch eine Kalenderdatei können Sie hier ablegen.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_DUE_TASKS">
        <source>Nothing is due today.

Options, View by shows the other tasks.</source>
        <translation>Heute ist nichts fällig.

Optionen, Ansicht zeigt die anderen Aufgaben.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_INCOMPLETE_TASKS">
        <source>Nothing is left to do.

Press New to write a task down.</source>
        <translation>Es ist nichts mehr zu tun.

Mit Neu schreiben Sie eine Aufgabe auf.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_COMPLETED_TASKS">
        <source>No task is completed yet.

Touch the box of a task, or press Space, to check it off.</source>
        <translation>Noch ist keine Aufgabe erledigt.

Tippen Sie auf das Kästchen einer Aufgabe oder drücken Sie die Leertaste, um sie abzuhaken.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_DELETED">
        <source>Not all tasks could be deleted.</source>
        <translation>Nicht alle Aufgaben konnten gelöscht werden.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_READ">
        <source>The tasks can't be read.

The log says why.</source>
        <translation>Die Aufgaben können nicht gelesen werden.

Das Protokoll nennt den Grund.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SEARCHING">
        <source>Searching…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_TASK_FOUND">
        <source>No task matches.

Empty the search line and choose all categories to see more.</source>
        <translation>Keine Aufgabe passt.

Leeren Sie die Suchzeile und wählen Sie alle Kategorien, um mehr zu sehen.</translation>
    </message>
    <message id="TXT_RID_HEADER_SAVED_TO_TASK_LIST">
        <source>Saved to Task List</source>
        <translation>In Aufgabenliste gespeichert</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_SAVED_TO_TASK_LIST">
        <source>%1 saved to Task List</source>
        <translation>%1 wurde in der Aufgabenliste gespeichert</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_TASKS_SAVED">
        <source>%1 tasks saved to Task List</source>
        <translation>%1 Aufgaben wurden in der Aufgabenliste gespeichert</translation>
    </message>
    <message id="TXT_RID_HEADER_MEMORY_FULL">
        <source>Memory Full</source>
        <translation>Speicher voll</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_FULL_PLEASE_DELETE_SOME_FILES_TO_CREATE_SPACE_IN_MEMORY">
        <source>Task cannot be created because phone memory is full. Please delete some files to create space in memory.</source>
        <translation>Die Aufgabe kann nicht angelegt werden, weil der Speicher des Telefons voll ist. Bitte löschen Sie einige Dateien, um Platz zu schaffen.</translation>
    </message>
    <message id="TXT_RID_HEADER_APPLICATION_LOCK">
        <source>Application Lock</source>
        <translation>Anwendungssperre</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_ENTER_LOCK_CODE">
        <source>Enter the lock code:</source>
        <translation>Geben Sie den Sperrcode ein:</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_WRONG_LOCK_CODE">
        <source>Wrong code. Please try again.</source>
        <translation>Falscher Code. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_TOO_MANY_WRONG_LOCK_CODES_1">
        <source>Too many wrong codes. Next try in %1.</source>
        <translation>Zu viele falsche Codes. Nächster Versuch in %1.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_LOCK_CODE_CANNOT_BE_CHECKED">
        <source>The code cannot be checked.</source>
        <translation>Der Code kann nicht geprüft werden.</translation>
    </message>
    <message id="TXT_RID_HEADER_SEND_VIA_BLUETOOTH">
        <source>Send via Bluetooth</source>
        <translation>Mit Bluetooth senden</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_SEND">
        <source>Send</source>
        <translation>Senden</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_PAIRED">
        <source>%1, paired</source>
        <translation>%1, gekoppelt</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE">
        <source>Choose a device.</source>
        <translation>Wählen Sie ein Gerät.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE_SEARCHING">
        <source>Choose a device. Searching for more…</source>
        <translation>Wählen Sie ein Gerät. Weitere werden gesucht …</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_KNOWN_DEVICES_SEARCHING">
        <source>No known devices. Searching for devices in reach…</source>
        <translation>Keine bekannten Geräte. Geräte in Reichweite werden gesucht …</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_DEVICES_FOUND">
        <source>No devices found.</source>
        <translation>Keine Geräte gefunden.</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENDING_1_TO_2">
        <source>Sending %1 to %2</source>
        <translation>%1 wird an %2 gesendet</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CONNECTING">
        <source>Connecting…</source>
        <translation>Verbindung wird aufgebaut …</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_WAITING_FOR_OTHER_DEVICE">
        <source>Waiting for the other device…</source>
        <translation>Warten auf das andere Gerät …</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_OF_2">
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENT_TO_1">
        <source>Sent to %1.</source>
        <translation>An %1 gesendet.</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENDING_TO_1_FAILED">
        <source>%1 has not received it: it was declined, or the connection broke.</source>
        <translation>%1 hat nichts empfangen: Die Übertragung wurde abgelehnt oder unterbrochen.</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_NO_CONNECTION_TO_1">
        <source>No connection to %1. Is it switched on and in reach?</source>
        <translation>Keine Verbindung zu %1. Ist das Gerät eingeschaltet und in Reichweite?</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_BLUETOOTH_ADAPTER">
        <source>Bluetooth cannot be used: no adapter was found.</source>
        <translation>Bluetooth ist nicht verfügbar: Es wurde kein Adapter gefunden.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_BLUETOOTH_IS_OFF">
        <source>Bluetooth is switched off. Switch it on and try again.</source>
        <translation>Bluetooth ist ausgeschaltet. Schalten Sie es ein und versuchen Sie es noch einmal.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_OBJECT_PUSH_SERVICE">
        <source>Nothing can be sent: the Bluetooth sending service is missing.</source>
        <translation>Senden ist nicht möglich: Der Bluetooth-Sendedienst fehlt.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_OBJECT_NOT_PREPARED">
        <source>Nothing was sent: there is no room for a copy to send.</source>
        <translation>Nichts wurde gesendet: Für die Kopie zum Senden ist kein Platz.</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASKS">
        <source>Tasks</source>
        <translation>Aufgaben</translation>
    </message>
    <message id="TXT_RID_STANDARD_OPEN">
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_SAVED_NOT_SHOWN">
        <source>Saved. This view does not show the task.</source>
        <translation>Gespeichert. Diese Ansicht zeigt die Aufgabe nicht.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_WAS_DELETED">
        <source>The task has been deleted.</source>
        <translation>Die Aufgabe wurde gelöscht.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_IT">
        <source>This view does not show it.</source>
        <translation>Diese Ansicht zeigt sie nicht.</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_ALL">
        <source>This view does not show all of them.</source>
        <translation>Diese Ansicht zeigt nicht alle.</translation>
    </message>
</context>
</TS>
