<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>BelfryApp</name>
    <message>
        <source>No Sound</source>
        <translation>Kein Ton</translation>
    </message>
    <message>
        <source>Bells will be silent: a part of Belfry cannot be loaded. Install Belfry again.</source>
        <translation>Alles bleibt stumm: Ein Teil von Belfry lässt sich nicht laden. Installieren Sie Belfry neu.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message>
        <source>Toolbar</source>
        <translation>Symbolleiste</translation>
    </message>
    <message>
        <source>Toggle Sidebar</source>
        <translation>Seitenleiste ein- oder ausblenden</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Add Plan</source>
        <translation>Plan hinzufügen</translation>
    </message>
    <message>
        <source>Add Holiday</source>
        <translation>Freie Tage hinzufügen</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Bestätigen</translation>
    </message>
    <message>
        <source>Delete the selected data?</source>
        <translation>Die ausgewählten Einträge löschen?</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>EditSheet</name>
    <message>
        <source>Title:</source>
        <translation>Titel:</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Please input the Title</source>
        <translation>Bitte geben Sie einen Titel ein</translation>
    </message>
    <message>
        <source>Tip</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Select a file</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>HistoryItem</name>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>HistoryView</name>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
</context>
<context>
    <name>HolidayEdit</name>
    <message>
        <source>Add Holiday</source>
        <translation>Freie Tage hinzufügen</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Freie Tage ändern</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Beginn:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Ende:</translation>
    </message>
</context>
<context>
    <name>HolidayItem</name>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>HolidayView</name>
    <message>
        <source>Holiday</source>
        <translation>Freie Tage</translation>
    </message>
</context>
<context>
    <name>PlanEdit</name>
    <message>
        <source>Add Plan</source>
        <translation>Plan hinzufügen</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Plan ändern</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Beginn:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Ende:</translation>
    </message>
    <message>
        <source>Please select the Week</source>
        <translation>Bitte wählen Sie mindestens einen Wochentag aus</translation>
    </message>
    <message>
        <source>Please select the Music</source>
        <translation>Bitte wählen Sie eine Tondatei aus</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>So</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>Mo</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>Di</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>Mi</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Do</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Fr</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sa</translation>
    </message>
    <message>
        <source>Week:</source>
        <translation>Tage:</translation>
    </message>
    <message>
        <source>Loop:</source>
        <translation>Schleife:</translation>
    </message>
    <message>
        <source>Choose File</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>Music:</source>
        <translation>Ton:</translation>
    </message>
    <message>
        <source>Folder:</source>
        <translation>Ordner:</translation>
    </message>
</context>
<context>
    <name>PlanItem</name>
    <message>
        <source>Repeat</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>So</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>Mo</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>Di</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>Mi</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Do</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Fr</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sa</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stoppen</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
</context>
<context>
    <name>PlanView</name>
    <message>
        <source>Plan</source>
        <translation>Plan</translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Plan</source>
        <translation>Plan</translation>
    </message>
    <message>
        <source>Holiday</source>
        <translation>Freie Tage</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Screens</source>
        <translation>Ansichten</translation>
    </message>
</context>
</TS>
