#pragma once

#include <QFileDialog>

/// The panel in which a person selects one audio file. It is window-modal, deletes itself when it closes, and
/// is shown with open(); fileSelected() tells the path.
class FileChooser final : public QFileDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FileChooser)

public:
    /// Opens in the folder of the file at `current`, else in the user's music folder, documents folder or
    /// home, whichever exists first. `over` is the window that is locked meanwhile.
    FileChooser(const QString &current, QWidget *over);
};
