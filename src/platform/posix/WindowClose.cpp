#include "platform/posix/WindowClose.h"

#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/SharedLibrary.h"

namespace kalvex::platform {

namespace {

// The functions of the library that are used here.
#define KALVEX_XCB_FUNCTIONS(X)   \
    X(connect)                    \
    X(connection_has_error)       \
    X(disconnect)                 \
    X(get_input_focus)            \
    X(get_input_focus_reply)      \
    X(get_setup)                  \
    X(setup_roots_iterator)       \
    X(screen_next)                \
    X(intern_atom)                \
    X(intern_atom_reply)          \
    X(query_tree)                 \
    X(query_tree_reply)           \
    X(query_tree_children)        \
    X(query_tree_children_length) \
    X(get_property)               \
    X(get_property_reply)         \
    X(get_property_value)         \
    X(get_property_value_length)  \
    X(send_event)

struct XcbLibrary {
    SharedLibrary xcb{"libxcb.so.1"};
#define KALVEX_ROW(name) decltype(&xcb_##name) name = xcb.Find<decltype(&xcb_##name)>("xcb_" #name);
    KALVEX_XCB_FUNCTIONS(KALVEX_ROW)
#undef KALVEX_ROW
};

const XcbLibrary* Xcb() {
    static const XcbLibrary functions;
    return functions.xcb.IsComplete() ? &functions : nullptr;
}

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, Free>;

class Display {
  public:
    explicit Display(const XcbLibrary& xcb)
        : m_xcb(xcb), m_connection(xcb.connect(nullptr, nullptr)) {}
    ~Display() { m_xcb.disconnect(m_connection); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    int RequestClose(pid_t pid) {
        if (m_xcb.connection_has_error(m_connection) != 0) return 0;
        m_pidAtom = Atom("_NET_WM_PID");
        m_machineAtom = Atom("WM_CLIENT_MACHINE");
        m_protocolsAtom = Atom("WM_PROTOCOLS");
        m_deleteAtom = Atom("WM_DELETE_WINDOW");
        int asked = 0;
        auto screens = m_xcb.setup_roots_iterator(m_xcb.get_setup(m_connection));
        for (; screens.rem > 0; m_xcb.screen_next(&screens)) {
            std::vector<xcb_window_t> open = Children(screens.data->root);
            while (!open.empty()) {
                const xcb_window_t window = open.back();
                open.pop_back();
                const std::string owner = Property(window, m_pidAtom, XCB_ATOM_CARDINAL);
                if (owner.empty()) {
                    const std::vector<xcb_window_t> inner = Children(window);
                    open.insert(open.end(), inner.begin(), inner.end());
                } else if (Belongs(window, owner, pid) && TakesCloseRequests(window)) {
                    SendCloseRequest(window);
                    ++asked;
                }
            }
        }
        return Arrive() ? asked : 0;
    }

  private:
    static constexpr std::uint32_t kLongestProperty = 64;  // in units of four bytes
    static constexpr xcb_atom_t kNoAtom = XCB_ATOM_NONE;

    xcb_atom_t Atom(std::string_view name) {
        const auto cookie = m_xcb.intern_atom(m_connection, 0,
                                              static_cast<std::uint16_t>(name.size()), name.data());
        const ReplyPointer<xcb_intern_atom_reply_t> reply(
            m_xcb.intern_atom_reply(m_connection, cookie, nullptr));
        return reply ? reply->atom : kNoAtom;
    }

    std::vector<xcb_window_t> Children(xcb_window_t window) {
        const auto cookie = m_xcb.query_tree(m_connection, window);
        const ReplyPointer<xcb_query_tree_reply_t> reply(
            m_xcb.query_tree_reply(m_connection, cookie, nullptr));
        if (!reply) return {};
        const xcb_window_t* first = m_xcb.query_tree_children(reply.get());
        return {first, first + m_xcb.query_tree_children_length(reply.get())};
    }

    // The bytes of a property; none for a window that has gone.
    std::string Property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
        const auto cookie =
            m_xcb.get_property(m_connection, 0, window, name, type, 0, kLongestProperty);
        const ReplyPointer<xcb_get_property_reply_t> reply(
            m_xcb.get_property_reply(m_connection, cookie, nullptr));
        if (!reply) return {};
        return {static_cast<const char*>(m_xcb.get_property_value(reply.get())),
                static_cast<std::size_t>(m_xcb.get_property_value_length(reply.get()))};
    }

    // A window of another machine may bear the same number.
    bool Belongs(xcb_window_t window, std::string_view owner, pid_t pid) {
        std::uint32_t number = 0;
        if (owner.size() != sizeof number) return false;
        std::memcpy(&number, owner.data(), sizeof number);
        if (number != static_cast<std::uint32_t>(pid)) return false;
        const std::string machine = Property(window, m_machineAtom, XCB_ATOM_STRING);
        char host[256] = {};
        return machine.empty() || gethostname(host, sizeof host - 1) != 0 || machine == host;
    }

    bool TakesCloseRequests(xcb_window_t window) {
        const std::string protocols = Property(window, m_protocolsAtom, XCB_ATOM_ATOM);
        for (std::size_t i = 0; i + sizeof(xcb_atom_t) <= protocols.size();
             i += sizeof(xcb_atom_t)) {
            if (std::memcmp(protocols.data() + i, &m_deleteAtom, sizeof(xcb_atom_t)) == 0)
                return true;
        }
        return false;
    }

    void SendCloseRequest(xcb_window_t window) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = m_protocolsAtom;
        event.data.data32[0] = m_deleteAtom;
        event.data.data32[1] = XCB_CURRENT_TIME;
        m_xcb.send_event(m_connection, 0, window, XCB_EVENT_MASK_NO_EVENT,
                         reinterpret_cast<const char*>(&event));
    }

    // Waits until the display has taken all that was sent.
    bool Arrive() {
        const ReplyPointer<xcb_get_input_focus_reply_t> reply(m_xcb.get_input_focus_reply(
            m_connection, m_xcb.get_input_focus(m_connection), nullptr));
        return reply != nullptr;
    }

    const XcbLibrary& m_xcb;
    xcb_connection_t* m_connection;
    xcb_atom_t m_pidAtom = kNoAtom;
    xcb_atom_t m_machineAtom = kNoAtom;
    xcb_atom_t m_protocolsAtom = kNoAtom;
    xcb_atom_t m_deleteAtom = kNoAtom;
};

}  // namespace

int RequestWindowClose(pid_t pid) {
    if (std::getenv("DISPLAY") == nullptr) return 0;
    const XcbLibrary* xcb = Xcb();
    return xcb == nullptr ? 0 : Display(*xcb).RequestClose(pid);
}

}  // namespace kalvex::platform
