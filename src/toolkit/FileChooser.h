#pragma once

#include <QFileDialog>

/// The dialog that selects one audio file. It is window-modal, deletes itself when it closes, and is shown
/// with open(); fileSelected() has the path.
///
/// Where the session has a desktop portal it is the desktop's own dialog, which runs in another process: a
/// slow folder does not block this one. Elsewhere it is Qt's, which reads folders here.
class FileChooser final : public QFileDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FileChooser)

public:
    /// Makes Qt use the portal's dialog, unless the environment names a platform theme or the portal does not
    /// respond within two seconds, for which this waits. To be called before QApplication is made.
    static void preferPortal();

    /// Opens in the folder of the file at `current`, else in the user's music folder, documents folder or
    /// home, whichever exists first. `parent` is the window that it blocks.
    FileChooser(const QString &current, QWidget *parent);

    /// Shows the dialog as soon as the portal has answered, or after two seconds.
    void open() override;
};
