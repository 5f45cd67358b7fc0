#include "wine.h"

#include <QDir>
#include <QFile>
#include <optional>
#include <stdexcept>

#include "platform/top_level_windows.h"
#include "support/virtual_display.h"

namespace kibo::test {
namespace {

constexpr int kPrefixMs = 120'000;

std::optional<xcb_window_t> shownWindow(const XClient& client, const char* title) {
    const auto found = platform::FindWindowByTitle(title);
    if (!found || !client.isViewable(static_cast<xcb_window_t>(*found))) return std::nullopt;
    return static_cast<xcb_window_t>(*found);
}

template <class Event>
void send(const XClient& client, xcb_window_t to, const Event& event) {
    static_assert(sizeof event == 32, "what the protocol sends");
    xcb_send_event(client.get(), 0, to, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    xcb_flush(client.get());
}

}  // namespace

Wine::Wine() {
    QProcess boot;
    start(boot, QStringLiteral("wineboot.exe"));
    if (!boot.waitForFinished(kPrefixMs)) throw std::runtime_error("Wine can't make its folder");
    // Wine brings no .NET; the program looks for the folder only.
    QDir(prefix_.path()).mkpath(QStringLiteral("drive_c/windows/Microsoft.NET/Framework/v3.5"));
    setFonts();
}

Wine::~Wine() {
    // Only what runs in this prefix.
    QProcess server;
    server.setProcessEnvironment(environment());
    server.start(QDir(QFileInfo(loader()).path()).filePath(QStringLiteral("wineserver")), {QStringLiteral("-k")});
    server.waitForFinished();
}

QString Wine::loader() {
    for (const char* path : {"/usr/lib/wine/wine64", "/usr/bin/wine64", "/usr/bin/wine"})
        if (QFile::exists(QLatin1String(path))) return QLatin1String(path);
    return {};
}

void Wine::start(QProcess& process, const QString& program, const QProcessEnvironment& variables,
                 const QStringList& arguments) const {
    QProcessEnvironment all = environment();
    all.insert(variables);
    process.setProcessEnvironment(all);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(loader(), QStringList{program} + arguments);
    process.waitForStarted();
}

QString Wine::windowsPath(const QString& path) {
    return QStringLiteral("Z:") + QString(path).replace(u'/', u'\\');
}

QProcessEnvironment Wine::environment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("WINEPREFIX"), prefix_.path());
    environment.insert(QStringLiteral("WINEDEBUG"), QStringLiteral("-all"));
    // Without menus, and without the two add-ons that a new prefix would otherwise ask to download.
    environment.insert(QStringLiteral("WINEDLLOVERRIDES"), QStringLiteral("winemenubuilder.exe,mscoree,mshtml=d"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

void Wine::setFonts() const {
    // In the place of Windows' fonts, so that pictures look the same wherever they are taken.
    QFile file(prefix_.filePath(QStringLiteral("fonts.reg")));
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]\r\n");
    for (const char* name : {"Segoe UI", "Tahoma", "MS Shell Dlg", "MS Shell Dlg 2"})
        file.write(QByteArray("\"") + name + "\"=\"DejaVu Sans\"\r\n");
    file.close();
    QProcess registry;
    registry.setProcessEnvironment(environment());
    registry.start(loader(), {QStringLiteral("regedit.exe"), QStringLiteral("/S"), windowsPath(file.fileName())});
    registry.waitForFinished();
}

bool closeWindow(const char* title) {
    XClient client;
    const auto window = shownWindow(client, title);
    if (!window) return false;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = *window;
    event.type = client.atom("WM_PROTOCOLS");
    event.data.data32[0] = client.atom("WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    send(client, *window, event);
    return true;
}

bool pressCtrl(const char* title, char letter) {
    XClient client;
    const auto window = shownWindow(client, title);
    if (!window) return false;
    const xcb_setup_t* setup = xcb_get_setup(client.get());
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    auto* keys = xcb_get_keyboard_mapping_reply(
        client.get(), xcb_get_keyboard_mapping(client.get(), setup->min_keycode, count), nullptr);
    if (!keys) return false;
    const auto press = [&](xcb_keysym_t symbol, std::uint8_t type) {
        const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(keys);
        xcb_key_press_event_t event{};
        while (symbols[event.detail * keys->keysyms_per_keycode] != symbol && event.detail + 1 < count) ++event.detail;
        event.detail = static_cast<xcb_keycode_t>(event.detail + setup->min_keycode);
        event.response_type = type;
        event.root = xcb_setup_roots_iterator(setup).data->root;
        event.event = *window;
        event.same_screen = 1;
        send(client, *window, event);
    };
    constexpr xcb_keysym_t kControl = 0xFFE3;
    press(kControl, XCB_KEY_PRESS);
    press(static_cast<xcb_keysym_t>(letter), XCB_KEY_PRESS);
    press(static_cast<xcb_keysym_t>(letter), XCB_KEY_RELEASE);
    press(kControl, XCB_KEY_RELEASE);
    std::free(keys);
    return true;
}

bool clickWindow(const char* title, int x, int y) {
    XClient client;
    const auto window = shownWindow(client, title);
    if (!window) return false;
    xcb_button_press_event_t event{};
    event.root = xcb_setup_roots_iterator(xcb_get_setup(client.get())).data->root;
    const auto cookie = xcb_translate_coordinates(client.get(), *window, event.root, static_cast<std::int16_t>(x),
                                                  static_cast<std::int16_t>(y));
    auto* place = xcb_translate_coordinates_reply(client.get(), cookie, nullptr);
    if (!place) return false;
    event.event = *window;
    event.event_x = static_cast<std::int16_t>(x);
    event.event_y = static_cast<std::int16_t>(y);
    event.root_x = place->dst_x;  // what Wine goes by
    event.root_y = place->dst_y;
    std::free(place);
    event.detail = XCB_BUTTON_INDEX_1;
    event.same_screen = 1;
    event.response_type = XCB_BUTTON_PRESS;
    send(client, *window, event);
    event.response_type = XCB_BUTTON_RELEASE;
    event.state = XCB_BUTTON_MASK_1;
    send(client, *window, event);
    return true;
}

}  // namespace kibo::test
