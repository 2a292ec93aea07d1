// SPDX-License-Identifier: GPL-3.0-or-later
#include "Tour.h"

#include "MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <cstdio>

int runTour(MainWindow &window)
{
    QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/vellumpad-tour-XXXXXX"));
    folder.setAutoRemove(false);
    window.show();
    const char *names[] = {"visual.png", "source.png", "preview.png"};
    for (int view = 0; view < 3; ++view) {
        window.control().setEditView(view);
        for (int i = 0; i < 100 && (i < 3 || window.control().Loading()); ++i) QApplication::processEvents();
        const QString file = folder.filePath(QLatin1String(names[view]));
        if (!window.grab().save(file)) return 1;
        std::printf("%s\n", qPrintable(file));
    }
    window.control().setEditView(0);
    return 0;
}
