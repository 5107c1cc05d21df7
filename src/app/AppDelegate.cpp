// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"

#include "actions/EmbeddedPython.h"
#include "app/AboutWindow.h"
#include "app/PassingMessage.h"
#include "app/kubeconfig/KubeConfigList.h"
#include "app/preferences/PreferencesWindowController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "core/kubeconfig/ContextPolicy.h"
#include "core/running/ApplicationRecord.h"
#include "core/running/PackagedKubectl.h"
#include "core/running/Shell.h"
#include "platform/desktop/Bundle.h"
#include "platform/desktop/Notifications.h"
#include "platform/process/ProcessKeeper.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "pods/console/ConsoleViewController.h"
#include "pods/logs/view/CombinedLogsWindowController.h"
#include "resources/changes/Confirmation.h"
#include "resources/forwards/PortForwardsWindow.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/widgets/Windows.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace tidewright {

namespace {

constexpr auto graceAtQuit = std::chrono::milliseconds(200);
constexpr auto untilKubectlIsChecked = std::chrono::seconds(5); // the first rows come first
constexpr auto graceForKubeConfig = std::chrono::milliseconds(500);

/// KUBECONFIG as this process was given it.
QString inheritedKubeConfig()
{
    return kubeconfig_list::ofEnvironment().value_or(qEnvironmentVariable("KUBECONFIG"));
}

} // namespace

AppDelegate::AppDelegate()
{
    mainQueue();
    setMainConsoleLookup([this]() -> Console * {
        const ClusterWindowFrame *frame = mainWindow();
        const MainWindowController *page = frame ? frame->currentPage() : nullptr;
        return page ? &page->windowConsoleController() : nullptr;
    });
    setMainWindowLookup([this]() -> QWidget * { return mainWindow(); });
    setNotificationFallback([this](const QString &title, const QString &text) {
        if (ClusterWindowFrame *window = mainWindow()) {
            PassingMessage::show(*window, title, text);
        }
    });
    setSettingsProblemHandler([](const QString &problem) { postConsoleError(problem); });
}

AppDelegate::~AppDelegate()
{
    setSettingsProblemHandler({});
    setNotificationFallback({});
    setMainWindowLookup({});
    setMainConsoleLookup({});
}

QString AppDelegate::startUp()
{
    const QString kubectl = bundle::auxiliaryExecutable(QStringLiteral("kubectl"));
    if (kubectl.isEmpty()) {
        return tr("Tidewright cannot start: the kubectl that belongs to its package is missing from %1. "
                  "Please install Tidewright again.")
            .arg(QDir::cleanPath(
                QCoreApplication::applicationDirPath() + QLatin1String("/../libexec/tidewright")));
    }
    setKubectlPath(kubectl);
    ContextPolicies::shared().keepWhatWasLost();
    const QString obstacle = createCacheDirectory();
    if (obstacle.isEmpty()) {
        prepareEmbeddedPython();
        loadEmbeddedPython();
    }
    return obstacle;
}

QString AppDelegate::createCacheDirectory()
{
    const QString caches = bundle::cachesFolder();
    if (caches.isEmpty()) {
        return {};
    }
    const QString path = caches + QLatin1String("/com.brindle.Tidewright");
    QDir().mkpath(caches);
    const QByteArray encoded = QFile::encodeName(path);
    const bool made = ::mkdir(encoded.constData(), 0700) == 0;
    if (!made && (errno != EEXIST || !QFileInfo(path).isDir())) {
        return QLatin1String("Unable to create cache directory: ") + path + QLatin1String(": ")
            + QString::fromLocal8Bit(std::strerror(errno));
    }
    struct stat status = {};
    if (::stat(encoded.constData(), &status) != 0 || status.st_uid != ::geteuid()) {
        return QStringLiteral("Unable to create cache directory: %1: it belongs to somebody else").arg(path);
    }
    ::chmod(encoded.constData(), 0700);
    setCacheDirectory(path);
    PreviewFiles::sweep();
    return {};
}

void AppDelegate::applicationDidFinishLaunching()
{
    newDocument();
    shellQueue().post(&KubeConfigView::sweep);
    QTimer::singleShot(untilKubectlIsChecked, this, &AppDelegate::checkKubectl);
}

/// Tells when somebody has put another kubectl in the place of the packaged one.
void AppDelegate::checkKubectl()
{
    shellQueue().post([path = kubectlPath()] {
        const auto packaged = PackagedKubectl::ofPackage();
        const QString difference = packaged ? packaged->difference(path) : QString();
        if (!difference.isEmpty()) {
            mainQueue().post([difference] { postConsoleError(difference); });
        }
    });
}

void AppDelegate::newDocument()
{
    openWindow({});
}

void AppDelegate::openWindow(const QString &kubeConfig)
{
    auto *frame = new ClusterWindowFrame({m_userFile, m_webPages, m_actions, m_toolBarLayout}, kubeConfig);
    m_frames.removeAll(nullptr);
    m_frames.append(frame);
    m_windowControllers.append(frame->currentPage());
    connect(frame, &ClusterWindowFrame::newWindowRequested, this, &AppDelegate::newDocument);
    connect(frame, &ClusterWindowFrame::aboutRequested, this, &AppDelegate::showAbout);
    connect(frame, &ClusterWindowFrame::preferencesRequested, this, &AppDelegate::showPreferences);
    connect(frame, &ClusterWindowFrame::webPageRequested, this, &AppDelegate::openWebPage);
    connect(frame, &ClusterWindowFrame::quitRequested, this, &AppDelegate::quit);
    connect(frame, &ClusterWindowFrame::becameMain, this, [this, frame] {
        m_frames.removeAll(frame);
        m_frames.append(frame);
    });
    bringToFront(*frame);
}

QList<ClusterWindowFrame *> AppDelegate::frames() const
{
    QList<ClusterWindowFrame *> alive;
    for (const auto &frame : m_frames) {
        if (frame) {
            alive.append(frame);
        }
    }
    return alive;
}

ClusterWindowFrame *AppDelegate::mainWindow() const
{
    const auto alive = frames();
    return alive.isEmpty() ? nullptr : alive.last();
}

void AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (hasVisibleWindows) {
        return;
    }
    QList<QWidget *> windows;
    for (ClusterWindowFrame *frame : frames()) {
        windows.append(frame);
    }
    if (m_preferencesController) {
        windows.append(m_preferencesController);
    }
    if (m_aboutController) {
        windows.append(m_aboutController);
    }
    for (QWidget *window : std::as_const(windows)) {
        bringToFront(*window);
    }
}

void AppDelegate::comeForward()
{
    if (frames().isEmpty()) { // windows of logs may be all that is left
        newDocument();
        return;
    }
    bool hasVisibleWindows = false;
    for (ClusterWindowFrame *frame : frames()) { // the one last worked in comes last, and so in front
        if (frame->isVisible() && !frame->isMinimized()) {
            hasVisibleWindows = true;
            bringToFront(*frame);
        }
    }
    applicationShouldHandleReopen(hasVisibleWindows);
}

void AppDelegate::startedAgain(const QString &kubeConfig)
{
    const QString setting = MainWindowController::defaultKubeConfigPath();
    const QString usual = kubeConfigFiles(setting);
    const QString named = kubeConfig.isEmpty() ? setting : kubeConfig;
    const QString wanted = kubeConfigFiles(named.isEmpty() ? usualKubeConfig() : named);
    // The same start once more means the same, also when the setting outweighs its variable.
    const bool isUsual = wanted == usual || kubeConfig == inheritedKubeConfig();
    MainWindowController *page = pageOn(isUsual ? usual : wanted);
    if (!page) {
        openWindow(isUsual ? QString() : wanted);
        return;
    }
    if (isUsual) {
        comeForward();
    }
    auto *frame = qobject_cast<ClusterWindowFrame *>(page->window());
    if (frame && !(isUsual && kubeConfig.isEmpty())) { // a kubeconfig was asked for, not just the program
        frame->selectTab(static_cast<int>(frame->pages().indexOf(page)));
        bringToFront(*frame);
    }
}

/// The page on that kubeconfig that the user was last seen at; null when there is none.
MainWindowController *AppDelegate::pageOn(const QString &kubeConfig) const
{
    MainWindowController *found = nullptr;
    for (const ClusterWindowFrame *frame : frames()) {
        auto pages = frame->pages();
        pages.append(frame->currentPage());
        for (MainWindowController *page : std::as_const(pages)) {
            found = kubeConfigFiles(page->kubeConfigPath()) == kubeConfig ? page : found;
        }
    }
    return found;
}

void AppDelegate::quit()
{
    if (const ClusterWindowFrame *window = mainWindow()) {
        window->saveFrame();
    }
    QCoreApplication::exit(); // closing the windows one by one would leave the frame of any of them
}

void AppDelegate::openWebPage(WebPage page)
{
    if (m_webPages.has(page)) {
        QDesktopServices::openUrl(m_webPages.address(page, bundle::shortVersionString()));
    }
}

void AppDelegate::showAbout()
{
    if (!m_aboutController) {
        m_aboutController = new AboutWindow;
    }
    bringToFront(*m_aboutController);
}

void AppDelegate::showPreferences()
{
    if (!m_preferencesController) {
        m_preferencesController = new PreferencesWindowController;
    }
    m_preferencesController->showWindow();
}

PreferencesWindowController *AppDelegate::preferencesController() const
{
    return m_preferencesController;
}

void AppDelegate::applicationWillTerminate()
{
    delete m_preferencesController;
    delete m_aboutController;
    qDeleteAll(frames());
    const QWidgetList all = QApplication::topLevelWidgets();
    // A window takes its menus with it, which are such widgets too.
    const QList<QPointer<QWidget>> windows(all.cbegin(), all.cend());
    for (const QPointer<QWidget> &window : windows) {
        if (auto *logs = qobject_cast<CombinedLogsWindowController *>(window.data())) {
            delete logs;
        }
    }
    PortForwardsWindow::dismiss();
    PortForwards::shared().stopAll();
    m_userFile.finish(graceForKubeConfig);
    ProcessKeeper::instance().endAll(graceAtQuit);
    PreviewFiles::removeAll();
    userDefaults().flush();
}

} // namespace tidewright
