// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

/// An X server for one client, with one screen and a screen-saver extension that answers as the test chooses.
/// It has a thread, because the client waits for it.
class ScriptedXServer
{
public:
    enum class Answer
    {
        Figure,
        FigureAfterUnaskedEvent,
        LateFigureFirst, ///< Sends a late reply to the previous question before the figure.
        Error,
        Silence,
        HangUp,
    };

    enum class Start
    {
        WithExtension,
        WithoutExtension,
        HangUp,
    };

    explicit ScriptedXServer(Start start = Start::WithExtension);
    ~ScriptedXServer();
    ScriptedXServer(const ScriptedXServer &) = delete;
    ScriptedXServer &operator=(const ScriptedXServer &) = delete;

    /// The client's end of the connection, which the client closes.
    [[nodiscard]] int clientSocket() const { return m_client; }

    std::atomic<Answer> answer = Answer::Figure;
    std::atomic<std::uint32_t> milliseconds = 0;

private:
    void serve();
    /// False when the connection is to be closed.
    bool answerRequest(std::uint8_t opcode, std::uint16_t sequence);
    bool answerIdleQuery(std::uint16_t sequence);
    void sendSetup() const;
    void sendFigure(std::uint16_t sequence, std::uint32_t figure) const;

    Start m_start;
    int m_server = -1;
    int m_client = -1;
    std::thread m_thread;
};
