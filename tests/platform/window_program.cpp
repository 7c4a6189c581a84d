// A program with windows, for the tests of close requests: window_program KIND SIGN. It tells
// through the named pipe SIGN that its windows are there, and ends with 5 once each was asked to
// close.
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

xcb_connection_t* g_display = nullptr;

xcb_atom_t Atom(const char* name) {
    const auto cookie =
        xcb_intern_atom(g_display, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(g_display, cookie, nullptr);
    const xcb_atom_t atom = reply->atom;
    std::free(reply);
    return atom;
}

xcb_window_t MakeWindow(xcb_window_t parent) {
    const xcb_window_t window = xcb_generate_id(g_display);
    xcb_create_window(g_display, XCB_COPY_FROM_PARENT, window, parent, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(g_display, window);
    return window;
}

void Sign(xcb_window_t window) {
    const auto pid = static_cast<std::uint32_t>(getpid());
    xcb_change_property(g_display, XCB_PROP_MODE_REPLACE, window, Atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &pid);
}

void TakeCloseRequests(xcb_window_t window) {
    const xcb_atom_t atoms[] = {Atom("WM_TAKE_FOCUS"), Atom("WM_DELETE_WINDOW")};
    xcb_change_property(g_display, XCB_PROP_MODE_REPLACE, window, Atom("WM_PROTOCOLS"),
                        XCB_ATOM_ATOM, 32, 2, atoms);
}

void ComeFrom(xcb_window_t window, const std::string& machine) {
    xcb_change_property(g_display, XCB_PROP_MODE_REPLACE, window, Atom("WM_CLIENT_MACHINE"),
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(machine.size()),
                        machine.data());
}

bool IsCloseRequest(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != XCB_CLIENT_MESSAGE) return false;
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    return message.type == Atom("WM_PROTOCOLS") &&
           message.data.data32[0] == Atom("WM_DELETE_WINDOW");
}

}  // namespace

int main(int, char** argv) {
    const std::string kind = argv[1];
    g_display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(g_display) != 0) return 1;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(g_display)).data->root;
    int awaited = 1;
    const xcb_window_t window = MakeWindow(kind == "framed" ? MakeWindow(root) : root);
    Sign(window);
    if (kind != "deaf") TakeCloseRequests(window);
    if (kind == "foreign") ComeFrom(window, "inny.komputer");
    if (kind == "two") {
        char host[256] = {};
        gethostname(host, sizeof host - 1);
        const xcb_window_t second = MakeWindow(root);
        Sign(second);
        TakeCloseRequests(second);
        ComeFrom(second, host);
        awaited = 2;
    }
    Atom("WM_NAME");  // an answer says that all before it is done
    std::ofstream(argv[2]) << "gotowe\n";
    while (awaited > 0) {
        xcb_generic_event_t* event = xcb_wait_for_event(g_display);
        if (event == nullptr) return 2;
        if (IsCloseRequest(*event)) --awaited;
        std::free(event);
    }
    return 5;
}
