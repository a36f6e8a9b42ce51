<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>BelfryApp</name>
    <message>
        <source>No Sound</source>
        <translation>لا يوجد صوت</translation>
    </message>
    <message>
        <source>Bells will be silent: a part of Belfry cannot be loaded. Install Belfry again.</source>
        <translation>لن تُسمع الأجراس: تعذّر تحميل جزء من Belfry. أعد تثبيت Belfry.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>موافق</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message>
        <source>Toolbar</source>
        <translation>شريط الأدوات</translation>
    </message>
    <message>
        <source>Toggle Sidebar</source>
        <translation>إظهار الشريط الجانبي أو إخفاؤه</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>حذف</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>تحديد الكل</translation>
    </message>
    <message>
        <source>Add Plan</source>
        <translation>إضافة موعد</translation>
    </message>
    <message>
        <source>Add Holiday</source>
        <translation>إضافة عطلة</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>تحرير</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>تم</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>تأكيد</translation>
    </message>
    <message>
        <source>Delete the selected data?</source>
        <translation>هل تريد حذف العناصر المحددة؟</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>EditSheet</name>
    <message>
        <source>Title:</source>
        <translation>العنوان:</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>إضافة</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>تعديل</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>إغلاق</translation>
    </message>
    <message>
        <source>Please input the Title</source>
        <translation>يُرجى إدخال العنوان</translation>
    </message>
    <message>
        <source>Tip</source>
        <translation>تنبيه</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>موافق</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Select a file</source>
        <translation>اختيار ملف</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>كل الملفات (*)</translation>
    </message>
</context>
<context>
    <name>HistoryItem</name>
    <message>
        <source>Select</source>
        <translation>تحديد</translation>
    </message>
</context>
<context>
    <name>HistoryView</name>
    <message>
        <source>History</source>
        <translation>السجل</translation>
    </message>
</context>
<context>
    <name>HolidayEdit</name>
    <message>
        <source>Add Holiday</source>
        <translation>إضافة عطلة</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>تعديل العطلة</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>البداية:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>النهاية:</translation>
    </message>
</context>
<context>
    <name>HolidayItem</name>
    <message>
        <source>Edit</source>
        <translation>تحرير</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>تحديد</translation>
    </message>
</context>
<context>
    <name>HolidayView</name>
    <message>
        <source>Holiday</source>
        <translation>العطلات</translation>
    </message>
</context>
<context>
    <name>PlanEdit</name>
    <message>
        <source>Add Plan</source>
        <translation>إضافة موعد</translation>
    </message>
    <message>
        <source>Modify</source>
        <translation>تعديل الموعد</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>نعم</translation>
    </message>
    <message>
        <source>No</source>
        <translation>لا</translation>
    </message>
    <message>
        <source>Begin:</source>
        <translation>البداية:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>النهاية:</translation>
    </message>
    <message>
        <source>Please select the Week</source>
        <translation>يُرجى اختيار يوم واحد على الأقل</translation>
    </message>
    <message>
        <source>Please select the Music</source>
        <translation>يُرجى اختيار ملف صوتي</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>أحد</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>اثنين</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>ثلاثاء</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>أربعاء</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>خميس</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>جمعة</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>سبت</translation>
    </message>
    <message>
        <source>Week:</source>
        <translation>الأيام:</translation>
    </message>
    <message>
        <source>Loop:</source>
        <translation>التكرار:</translation>
    </message>
    <message>
        <source>Choose File</source>
        <translation>اختيار ملف</translation>
    </message>
    <message>
        <source>Music:</source>
        <translation>الصوت:</translation>
    </message>
    <message>
        <source>Folder:</source>
        <translation>المجلد:</translation>
    </message>
</context>
<context>
    <name>PlanItem</name>
    <message>
        <source>Repeat</source>
        <translation>تكرار</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>تحرير</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>تحديد</translation>
    </message>
    <message>
        <source>Sun</source>
        <translation>أحد</translation>
    </message>
    <message>
        <source>Mon</source>
        <translation>اثنين</translation>
    </message>
    <message>
        <source>Tue</source>
        <translation>ثلاثاء</translation>
    </message>
    <message>
        <source>Wed</source>
        <translation>أربعاء</translation>
    </message>
    <message>
        <source>Thu</source>
        <translation>خميس</translation>
    </message>
    <message>
        <source>Fri</source>
        <translation>جمعة</translation>
    </message>
    <message>
        <source>Sat</source>
        <translation>سبت</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>إيقاف</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>تشغيل</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>التقدم</translation>
    </message>
</context>
<context>
    <name>PlanView</name>
    <message>
        <source>Plan</source>
        <translation>المواعيد</translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Plan</source>
        <translation>المواعيد</translation>
    </message>
    <message>
        <source>Holiday</source>
        <translation>العطلات</translation>
    </message>
    <message>
        <source>History</source>
        <translation>السجل</translation>
    </message>
    <message>
        <source>Screens</source>
        <translation>الشاشات</translation>
    </message>
</context>
</TS>
