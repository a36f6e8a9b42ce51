<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>BelfryApp</name>
    <message>
        <source>No Sound</source>
        <translation>Pas de son</translation>
    </message>
    <message>
        <source>Bells will be silent: a part of Belfry cannot be loaded. Install Belfry again.</source>
        <translation>Les sonneries resteront muettes&#xa0;: une partie de Belfry ne peut pas être chargée. Réinstallez Belfry.</translation>
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
        <translation>Barre d’outils</translation>
    </message>
    <message>
        <source>Toggle Sidebar</source>
        <translation>Afficher ou masquer la barre latérale</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Tout sélectionner</translation>
    </message>
    <message>
        <source>Add Plan</source>
        <translation>Ajouter un programme</translation>
    </message>
    <message>
        <source>Add Holiday</source>
        <translation>Ajouter des congés</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Modifier</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Terminer</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Confirmation</translation>
    </message>
    <message>
        <source>Delete the selected data?</source>
        <translation>Supprimer les éléments sélectionnés&#xa0;?</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>EditSheet</name>
    <message>
        <source>Title:</source>
        <translation>Titre&#xa0;:</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Ajouter</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Enregistrer</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Please input the Title</source>
        <translation>Veuillez saisir un titre</translation>
    </message>
    <message>
        <source>Tip</source>
        <translation>Information</translation>
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
        <translation>Choisir un fichier</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Tous les fichiers (*)</translation>
    </message>
</context>
<context>
    <name>HistoryItem</name>
    <message>
        <source>Select</source>
        <translation>Sélectionner</translation>
    </message>
</context>
<context>
    <name>HistoryView</name>
    <message>
        <source>History</source>
        <translation>Historique</translation>
    </message>
</context>
<context>
    <name>HolidayEdit</name>
    <message>
        <source>Add Holiday</source>
        <translation>Ajouter des congés</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Modifier les congés</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Début&#xa0;:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Fin&#xa0;:</translation>
    </message>
</context>
<context>
    <name>HolidayItem</name>
    <message>
        <source>Edit</source>
        <translation>Modifier</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Sélectionner</translation>
    </message>
</context>
<context>
    <name>HolidayView</name>
    <message>
        <source>Holiday</source>
        <translation>Congés</translation>
    </message>
</context>
<context>
    <name>PlanEdit</name>
    <message>
        <source>Add Plan</source>
        <translation>Ajouter un programme</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Modifier le programme</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Oui</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Non</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Début&#xa0;:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Fin&#xa0;:</translation>
    </message>
    <message>
        <source>Please select the Week</source>
        <translation>Veuillez choisir au moins un jour de la semaine</translation>
    </message>
    <message>
        <source>Please select the Music</source>
        <translation>Veuillez choisir un fichier audio</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>Dim</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>Lun</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>Mar</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>Mer</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Jeu</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Ven</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sam</translation>
    </message>
    <message>
        <source>Week:</source>
        <translation>Jours&#xa0;:</translation>
    </message>
    <message>
        <source>Loop:</source>
        <translation>Boucle&#xa0;:</translation>
    </message>
    <message>
        <source>Choose File</source>
        <translation>Choisir un fichier</translation>
    </message>
    <message>
        <source>Music:</source>
        <translation>Son&#xa0;:</translation>
    </message>
    <message>
        <source>Folder:</source>
        <translation>Dossier&#xa0;:</translation>
    </message>
</context>
<context>
    <name>PlanItem</name>
    <message>
        <source>Repeat</source>
        <translation>En boucle</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Modifier</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Sélectionner</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>Dim</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>Lun</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>Mar</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>Mer</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Jeu</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Ven</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sam</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêter</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lire</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Progression</translation>
    </message>
</context>
<context>
    <name>PlanView</name>
    <message>
        <source>Plan</source>
        <translation>Programme</translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Plan</source>
        <translation>Programme</translation>
    </message>
    <message>
        <source>Holiday</source>
        <translation>Congés</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Historique</translation>
    </message>
    <message>
        <source>Screens</source>
        <translation>Vues</translation>
    </message>
</context>
</TS>
