// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/RunningScript.h"

#include "platform/threads/MainQueue.h"

#include <future>

namespace tidewright {

RunningScript::RunningScript(QPointer<Console> console, QString title, Console::Stop stop)
    : m_console(std::move(console))
    , m_title(std::move(title))
    , m_stop(std::move(stop))
{
    postToMain(m_console, [title = m_title, stop = m_stop](Console &shown) { shown.begin(title, stop); });
}

void RunningScript::end() const
{
    postToMain(m_console, [title = m_title, stop = m_stop](Console &shown) { shown.end(title, stop); });
}

void RunningScript::endAndWait() const
{
    end();
    auto told = std::make_shared<std::promise<void>>();
    std::future<void> done = told->get_future();
    // Once the event loop has ended nothing wakes us any more. The process then ends without waiting for us.
    mainQueue().post([told = std::move(told)] { told->set_value(); });
    done.wait();
}

} // namespace tidewright
