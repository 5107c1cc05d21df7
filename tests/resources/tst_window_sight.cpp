// SPDX-License-Identifier: GPL-3.0-or-later
// On a display of its own (Xvfb): what a window manager notes about desktops is noted by this test.
#include "resources/widgets/WindowSight.h"

#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <xcb/xcb.h>

using namespace tidewright;

namespace {

void setNumber(xcb_window_t window, const char *property, std::uint32_t value)
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const auto cookie = xcb_intern_atom(x11, 0, static_cast<std::uint16_t>(qstrlen(property)), property);
    auto *atom = xcb_intern_atom_reply(x11, cookie, nullptr);
    xcb_change_property(x11, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_CARDINAL, 32, 1, &value);
    std::free(atom);
    xcb_flush(x11);
}

} // namespace

class TestWindowSight : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsDesktops()
    {
        auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x11)).data->root;
        WindowSight &sight = WindowSight::shared();
        QWindow window;
        QVERIFY(!sight.sees(nullptr) && !sight.sees(&window));
        window.show();
        QTRY_VERIFY(sight.sees(&window)); // nobody knows of desktops
        QSignalSpy changed(&sight, &WindowSight::changed);
        const auto own = static_cast<xcb_window_t>(window.winId());
        setNumber(own, "_NET_WM_DESKTOP", 0);
        for (const std::uint32_t shown : {0U, 1U, 0U}) {
            setNumber(root, "_NET_CURRENT_DESKTOP", shown);
            QTRY_COMPARE(sight.sees(&window), shown == 0);
        }
        setNumber(own, "_NET_WM_DESKTOP", 2);
        QTRY_VERIFY(!sight.sees(&window));
        setNumber(own, "_NET_WM_DESKTOP", 0xFFFFFFFF); // on all
        QTRY_VERIFY(sight.sees(&window));
        window.hide();
        QTRY_VERIFY(!sight.sees(&window));
        QCOMPARE(changed.size(), 5);
    }
};

int main(int argc, char **argv)
{
    QProcess server;
    server.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
            QStringLiteral("tcp")});
    if (!server.waitForReadyRead()) {
        qFatal("Xvfb does not start");
    }
    qputenv("DISPLAY", ':' + server.readLine().trimmed());
    qputenv("QT_QPA_PLATFORM", "xcb");
    int status = 0;
    {
        QGuiApplication application(argc, argv);
        TestWindowSight test;
        status = QTest::qExec(&test, argc, argv);
    }
    server.terminate();
    server.waitForFinished();
    return status;
}

#include "tst_window_sight.moc"
