// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScriptedXServer.h"

#include <sys/socket.h>
#include <unistd.h>
#include <xcb/screensaver.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint8_t extensionOpcode = 144;

template <typename Message>
void send(int socket, const Message &message)
{
    ::send(socket, &message, sizeof message, MSG_NOSIGNAL);
}

/// Everything after the setup comes in units of 32 bytes.
template <typename Message>
void sendPadded(int socket, const Message &message)
{
    static_assert(sizeof message <= 32);
    std::array<char, 32> padded{};
    std::memcpy(padded.data(), &message, sizeof message);
    send(socket, padded);
}

bool receive(int socket, void *data, std::size_t size)
{
    return size == 0 || recv(socket, data, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

} // namespace

ScriptedXServer::ScriptedXServer(Start start)
    : m_start(start)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        std::abort();
    m_server = ends[0];
    m_client = ends[1];
    m_thread = std::thread([this] { serve(); });
}

ScriptedXServer::~ScriptedXServer()
{
    shutdown(m_server, SHUT_RDWR);
    m_thread.join();
    close(m_server);
}

void ScriptedXServer::serve()
{
    xcb_setup_request_t setup{};
    if (!receive(m_server, &setup, sizeof setup) || m_start == Start::HangUp) {
        shutdown(m_server, SHUT_RDWR);
        return;
    }
    sendSetup();
    struct
    {
        std::uint8_t opcode;
        std::uint8_t data;
        std::uint16_t length;
    } header{};
    std::array<char, 1024> rest{};
    for (std::uint16_t sequence = 1; receive(m_server, &header, sizeof header); ++sequence) {
        const std::size_t size = std::size_t(header.length) * 4 - sizeof header;
        if (!receive(m_server, rest.data(), size) || !answerRequest(header.opcode, sequence))
            break;
    }
    shutdown(m_server, SHUT_RDWR);
}

bool ScriptedXServer::answerRequest(std::uint8_t opcode, std::uint16_t sequence)
{
    if (opcode == extensionOpcode)
        return answerIdleQuery(sequence);
    if (opcode != XCB_QUERY_EXTENSION)
        return true;
    xcb_query_extension_reply_t reply{};
    reply.response_type = 1;
    reply.sequence = sequence;
    reply.present = m_start == Start::WithExtension ? 1 : 0;
    reply.major_opcode = extensionOpcode;
    reply.first_event = 92;
    sendPadded(m_server, reply);
    return true;
}

bool ScriptedXServer::answerIdleQuery(std::uint16_t sequence)
{
    switch (answer) {
    case Answer::Silence:
        return true;
    case Answer::HangUp:
        return false;
    case Answer::Error:
        sendPadded(m_server, xcb_value_error_t{0, XCB_DRAWABLE, sequence, 0, 0, 0, 0});
        return true;
    case Answer::FigureAfterUnaskedEvent:
        sendPadded(m_server, xcb_mapping_notify_event_t{XCB_MAPPING_NOTIFY, 0, sequence, 0, 0, 0, 0});
        break;
    case Answer::LateFigureFirst:
        sendFigure(static_cast<std::uint16_t>(sequence - 1), 99'000);
        break;
    case Answer::Figure:
        break;
    }
    sendFigure(sequence, milliseconds);
    return true;
}

void ScriptedXServer::sendSetup() const
{
    xcb_screen_t screen{};
    screen.root = 0x123;
    xcb_setup_t setup{};
    setup.status = 1;
    setup.protocol_major_version = X_PROTOCOL;
    setup.length = (sizeof setup - 8 + sizeof screen) / 4;
    setup.resource_id_mask = 0x1fffff;
    setup.maximum_request_length = 0xffff;
    setup.roots_len = 1;
    send(m_server, setup);
    send(m_server, screen);
}

void ScriptedXServer::sendFigure(std::uint16_t sequence, std::uint32_t figure) const
{
    xcb_screensaver_query_info_reply_t reply{};
    reply.response_type = 1;
    reply.sequence = sequence;
    reply.ms_since_user_input = figure;
    sendPadded(m_server, reply);
}
