#pragma once

#include "support/SetClock.h"
#include "support/TemplateDatabase.h"

#include <QPointer>
#include <QTest>
#include <QWidget>

/// An editor over a window, with the store and the database under it.
template<typename Editor, typename Store>
struct EditorDesk
{
    TemplateDatabase base;
    Store store{base.db};
    SetClock clock{"2026-03-29 07:05:42"};
    QWidget window;
    QPointer<Editor> editor;

    /// Opens the editor, for a new record or for the one given.
    template<typename... Record>
    void edit(const Record &...record)
    {
        window.show();
        editor = new Editor(store, clock, record..., &window);
        editor->open();
        QVERIFY(QTest::qWaitForWindowActive(editor));
    }

    /// Opens the editor for a record, once that is stored.
    template<typename Record>
    void editStored(const Record &record)
    {
        if constexpr (requires { store.addPlan(record); })
            QVERIFY(store.addPlan(record));
        else
            QVERIFY(store.addHoliday(record));
        edit(record);
    }
};
