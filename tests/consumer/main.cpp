// SPDX-License-Identifier: GPL-3.0-or-later
#include <VellumKit5/Vellum5>

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    Vellum5 editor;
    QObject::connect(&editor, &Vellum5::DocumentComplete, &application, [&] {
        const bool fine = editor.DOM() && editor.DOM()->body()->innerHTML() == QLatin1String("<P>Hello</P>");
        application.exit(fine ? 0 : 1);
    });
    editor.setDocumentHTML(QStringLiteral("<p>Hello"));
    const int status = application.exec();
    editor.Terminate();
    return status;
}
