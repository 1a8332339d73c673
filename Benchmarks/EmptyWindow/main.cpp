#include "OrvaneDesignKit/FirstPaint.h"

#include <QApplication>

// The reference for the start of the window: an empty window of the same size, which ends when it is painted.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QWidget window;
    window.resize(1440, 800);
    const orvane::design::FirstPaint watch(window, [] { QCoreApplication::quit(); });
    window.show();
    return QApplication::exec();
}
