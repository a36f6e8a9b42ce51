<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>BelfryApp</name>
    <message>
        <source>No Sound</source>
        <translation>Sin sonido</translation>
    </message>
    <message>
        <source>Bells will be silent: a part of Belfry cannot be loaded. Install Belfry again.</source>
        <translation>Los timbres no sonarán: no se puede cargar una parte de Belfry. Vuelva a instalar Belfry.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message>
        <source>Toolbar</source>
        <translation>Barra de herramientas</translation>
    </message>
    <message>
        <source>Toggle Sidebar</source>
        <translation>Mostrar u ocultar la barra lateral</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Eliminar</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Seleccionar todo</translation>
    </message>
    <message>
        <source>Add Plan</source>
        <translation>Añadir horario</translation>
    </message>
    <message>
        <source>Add Holiday</source>
        <translation>Añadir festivos</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Editar</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Listo</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Confirmar</translation>
    </message>
    <message>
        <source>Delete the selected data?</source>
        <translation>¿Eliminar los elementos seleccionados?</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>EditSheet</name>
    <message>
        <source>Title:</source>
        <translation>Título:</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Añadir</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Modificar</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
    <message>
        <source>Please input the Title</source>
        <translation>Escriba un título</translation>
    </message>
    <message>
        <source>Tip</source>
        <translation>Aviso</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Select a file</source>
        <translation>Seleccionar un archivo</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Todos los archivos (*)</translation>
    </message>
</context>
<context>
    <name>HistoryItem</name>
    <message>
        <source>Select</source>
        <translation>Seleccionar</translation>
    </message>
</context>
<context>
    <name>HistoryView</name>
    <message>
        <source>History</source>
        <translation>Historial</translation>
    </message>
</context>
<context>
    <name>HolidayEdit</name>
    <message>
        <source>Add Holiday</source>
        <translation>Añadir festivos</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Modificar festivos</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Inicio:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Fin:</translation>
    </message>
</context>
<context>
    <name>HolidayItem</name>
    <message>
        <source>Edit</source>
        <translation>Editar</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Seleccionar</translation>
    </message>
</context>
<context>
    <name>HolidayView</name>
    <message>
        <source>Holiday</source>
        <translation>Festivos</translation>
    </message>
</context>
<context>
    <name>PlanEdit</name>
    <message>
        <source>Add Plan</source>
        <translation>Añadir horario</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>Modificar horario</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Sí</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>Inicio:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Fin:</translation>
    </message>
    <message>
        <source>Please select the Week</source>
        <translation>Seleccione al menos un día de la semana</translation>
    </message>
    <message>
        <source>Please select the Music</source>
        <translation>Seleccione un archivo de sonido</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>Dom</translation>
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
        <translation>Mié</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Jue</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Vie</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sáb</translation>
    </message>
    <message>
        <source>Week:</source>
        <translation>Días:</translation>
    </message>
    <message>
        <source>Loop:</source>
        <translation>Repetir:</translation>
    </message>
    <message>
        <source>Choose File</source>
        <translation>Elegir archivo</translation>
    </message>
    <message>
        <source>Music:</source>
        <translation>Sonido:</translation>
    </message>
    <message>
        <source>Folder:</source>
        <translation>Carpeta:</translation>
    </message>
</context>
<context>
    <name>PlanItem</name>
    <message>
        <source>Repeat</source>
        <translation>Repetir</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Editar</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Seleccionar</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>Dom</translation>
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
        <translation>Mié</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>Jue</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>Vie</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>Sáb</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Detener</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Reproducir</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Progreso</translation>
    </message>
</context>
<context>
    <name>PlanView</name>
    <message>
        <source>Plan</source>
        <translation>Horario</translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Plan</source>
        <translation>Horario</translation>
    </message>
    <message>
        <source>Holiday</source>
        <translation>Festivos</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Historial</translation>
    </message>
    <message>
        <source>Screens</source>
        <translation>Vistas</translation>
    </message>
</context>
</TS>
