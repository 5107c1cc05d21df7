// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/widgets/WindowSight.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QWindow>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <xcb/xcb.h>

namespace tidewright {

namespace {

constexpr std::uint32_t allDesktops = 0xFFFFFFFF;

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};

/// Null on other platforms than X11.
xcb_connection_t *connection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atomOf(xcb_connection_t *x11, std::string_view name)
{
    const auto cookie = xcb_intern_atom(x11, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(x11, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

struct Atoms
{
    explicit Atoms(xcb_connection_t *x11)
        : shownDesktop(atomOf(x11, "_NET_CURRENT_DESKTOP"))
        , desktop(atomOf(x11, "_NET_WM_DESKTOP"))
    {
    }
    const xcb_atom_t shownDesktop; // of the root window
    const xcb_atom_t desktop; // of a window
};

const Atoms &atoms(xcb_connection_t *x11)
{
    static const Atoms known(x11); // there is one connection
    return known;
}

/// Nothing where nobody has set it: there are no desktops then.
std::optional<std::uint32_t> number(xcb_connection_t *x11, xcb_window_t window, xcb_atom_t property)
{
    const auto cookie = xcb_get_property(x11, 0, window, property, XCB_ATOM_CARDINAL, 0, 1);
    const std::unique_ptr<xcb_get_property_reply_t, Free> reply(xcb_get_property_reply(x11, cookie, nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) {
        return std::nullopt;
    }
    return *static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
}

bool isOnShownDesktop(const QWindow &window)
{
    xcb_connection_t *x11 = connection();
    if (!x11) {
        return true;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x11)).data->root;
    const auto desktop = number(x11, static_cast<xcb_window_t>(window.winId()), atoms(x11).desktop);
    const auto shown = number(x11, root, atoms(x11).shownDesktop);
    return !desktop || !shown || *desktop == allDesktops || *desktop == *shown;
}

bool isSeen(const QWindow &window)
{
    return window.isExposed() && isOnShownDesktop(window);
}

} // namespace

WindowSight &WindowSight::shared()
{
    static WindowSight sight;
    return sight;
}

WindowSight::WindowSight()
{
    if (connection()) {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
}

bool WindowSight::sees(QWindow *window)
{
    if (!window) {
        return false;
    }
    if (!m_seen.contains(window)) {
        m_seen.insert(window, isSeen(*window));
        window->installEventFilter(this);
        connect(window, &QObject::destroyed, this, [this, window] { m_seen.remove(window); });
    }
    return m_seen.value(window);
}

bool WindowSight::eventFilter(QObject *window, QEvent *event)
{
    if (event->type() == QEvent::Expose) {
        lookAgain(*static_cast<QWindow *>(window));
    }
    return false;
}

bool WindowSight::nativeEventFilter(const QByteArray &type, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if (type != "xcb_generic_event_t" || (event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto changed = reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom;
    const Atoms &known = atoms(connection());
    if (changed == known.shownDesktop || changed == known.desktop) {
        const auto windows = m_seen.keys();
        for (QWindow *window : windows) {
            lookAgain(*window);
        }
    }
    return false;
}

void WindowSight::lookAgain(QWindow &window)
{
    bool &seen = m_seen[&window];
    if (const bool now = isSeen(window); now != seen) {
        seen = now;
        Q_EMIT changed();
    }
}

} // namespace tidewright
