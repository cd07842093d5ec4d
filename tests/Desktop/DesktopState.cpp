// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScreenProbe.h"

#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace {

XcbReply<xcb_get_property_reply_t> propertyOf(xcb_connection_t *connection, xcb_window_t window,
                                              std::string_view name)
{
    constexpr std::uint32_t maximumWords = 1024;
    xcb_generic_error_t *error = nullptr;
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection,
        xcb_get_property(connection, 0, window, atomNamed(connection, name), XCB_ATOM_ANY, 0, maximumWords),
        &error));
    std::free(error);
    return reply;
}

std::span<const std::uint32_t> numbersIn(const xcb_get_property_reply_t *reply)
{
    if (reply == nullptr || reply->format != 32)
        return {};
    return {static_cast<const std::uint32_t *>(xcb_get_property_value(reply)), reply->value_len};
}

/// The number in a property, or `absent`.
long long numberOf(xcb_connection_t *connection, xcb_window_t window, std::string_view name, long long absent)
{
    const auto reply = propertyOf(connection, window, name);
    const auto numbers = numbersIn(reply.get());
    return numbers.empty() ? absent : numbers.front();
}

/// The text of a property, ready to stand between the quotes of a JSON string.
std::string textOf(xcb_connection_t *connection, xcb_window_t window, std::string_view name)
{
    const auto reply = propertyOf(connection, window, name);
    if (!reply || reply->format != 8)
        return {};
    const std::string_view value(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                 reply->value_len);
    std::string text;
    for (const char character : value) {
        if (character == '"' || character == '\\')
            text += '\\';
        text += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
    }
    return text;
}

void printWindow(xcb_connection_t *connection, xcb_window_t window, bool isFirst)
{
    xcb_generic_error_t *error = nullptr;
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), &error));
    std::free(error);
    error = nullptr;
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), &error));
    std::free(error);
    if (!attributes || !geometry)
        return;
    std::printf(
        R"(%s{"id":%u,"x":%d,"y":%d,"width":%u,"height":%u,"depth":%u,"viewable":%s,"overrideRedirect":%s,)",
        isFirst ? "" : ",\n", window, geometry->x, geometry->y, geometry->width, geometry->height,
        geometry->depth, attributes->map_state == XCB_MAP_STATE_VIEWABLE ? "true" : "false",
        attributes->override_redirect != 0 ? "true" : "false");
    std::printf(
        R"("processId":%lld,"class":"%s","title":"%s"})", numberOf(connection, window, "_NET_WM_PID", 0),
        textOf(connection, window, "WM_CLASS").c_str(), textOf(connection, window, "WM_NAME").c_str());
}

bool hasCompositor(xcb_connection_t *connection)
{
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atomNamed(connection, "_NET_WM_CM_S0")), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace

void printDesktopState(xcb_connection_t *connection)
{
    const xcb_window_t root = rootWindow(connection);
    const XcbReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    const XcbReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr));
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (!focus || !pointer || !tree)
        return;
    std::printf(R"({"focus":%u,"active":%lld,"desktop":%lld,"compositor":%s,"pointer":[%d,%d],"clients":[)",
                focus->focus, numberOf(connection, root, "_NET_ACTIVE_WINDOW", -1),
                numberOf(connection, root, "_NET_CURRENT_DESKTOP", -1),
                hasCompositor(connection) ? "true" : "false", pointer->root_x, pointer->root_y);
    const auto clients = propertyOf(connection, root, "_NET_CLIENT_LIST");
    bool isFirst = true;
    for (const std::uint32_t client : numbersIn(clients.get())) {
        std::printf("%s%u", isFirst ? "" : ",", client);
        isFirst = false;
    }
    std::printf("],\n\"windows\":[");
    isFirst = true;
    const std::span<const xcb_window_t> children(xcb_query_tree_children(tree.get()), tree->children_len);
    for (const xcb_window_t child : children) {
        printWindow(connection, child, isFirst);
        isFirst = false;
    }
    std::puts("]}");
}
