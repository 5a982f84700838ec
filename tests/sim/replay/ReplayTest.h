// SPDX-License-Identifier: MIT
#pragma once

#include "MadeMessage.h"
#include "Remote.h"
#include "TemporaryFolder.h"
#include "trace/CaptureWriter.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace zviptv::test {

/// A recording that is written message by message. The application is :1.5, the service is :1.2. Times are
/// in milliseconds.
class MadeRecording
{
public:
    explicit MadeRecording(std::string const& path) : m_writer(path, "test") {}

    void Add(int time, MadeMessage const& message)
    {
        m_writer.Write(message.At(m_begin + std::int64_t{time} * 1000));
    }

    /// The clock of the television is set: the times of all messages after this are so much later.
    void SetClock(std::chrono::hours step) { m_begin += std::chrono::microseconds(step).count(); }

    /// A request; returns its serial.
    std::uint32_t Ask(int time, std::string const& endpoint, WireBody body,
                      std::string const& application = ":1.5")
    {
        MadeMessage message = MadeRequest(endpoint, ++m_serial, std::move(body));
        message.sender = application;
        m_application = application;
        Add(time, message);
        return m_serial;
    }

    /// The reply to the last request.
    void Reply(int time, WireBody body, std::string const& service = ":1.2")
    {
        MadeMessage message = MadeReply(m_serial, std::move(body));
        message.sender = service;
        message.destination = m_application;
        Add(time, message);
    }

    void Error(int time, std::string const& name, std::string const& text, std::string const& sender = ":1.2")
    {
        MadeMessage message = MadeReply(m_serial, WireBody::Strings({text}));
        message.type = DBUS_MESSAGE_TYPE_ERROR;
        message.errorName = name;
        message.sender = sender;
        Add(time, message);
    }

    void Exchange(int time, std::string const& endpoint, WireBody request, WireBody reply,
                  std::string const& service = ":1.2")
    {
        Ask(time, endpoint, std::move(request));
        Reply(time, std::move(reply), service);
    }

    void Announce(int time, std::string const& type, std::string const& add)
    {
        MadeMessage message =
            MadeRequest("", ++m_serial, Pairs({{"dbusname", ":1.5"}, {"type", type}, {"add", add}}));
        message.destination = "org.corvel.zviptvapi.dbushelper";
        message.path = "/org/corvel/zviptvapi/dbushelper";
        message.interface = "org.corvel.zviptvapi.dbushelper";
        message.member = "SendSignal";
        Add(time, message);
    }

    void Caption(int time, std::string const& data, std::string const& application = ":1.5")
    {
        MadeMessage message = MadeNotification(Entries({{"functionname", "CaptionCB"},
                                                        {"captionDataSize", std::to_string(data.size())},
                                                        {"captionType", "4"},
                                                        {"captionData", data}}));
        message.destination = application;
        Add(time, message);
    }

    void Owner(int time, std::string const& former, std::string const& owner)
    {
        Add(time, MadeOwnerChange("org.corvel.zviptvapi.dbushelper", former, owner));
    }

    void Save() { m_writer.Flush(); }

private:
    trace::CaptureWriter m_writer;
    std::int64_t m_begin = 1'700'000'000'000'000; ///< microseconds since 1970
    std::uint32_t m_serial = 100;
    std::string m_application = ":1.5";
};

/// A simulator on the test's bus that replays a file of the test.
class Replaying : public ControlTest
{
protected:
    std::string Path() const { return m_folder / "made.pcapng"; }

    MadeRecording& Recording()
    {
        if (!m_recording) {
            m_recording.emplace(Path());
        }
        return *m_recording;
    }

    void Replay(std::vector<std::string> options = {})
    {
        Recording().Save();
        options.insert(options.begin(), {"--replay", Path()});
        Start(options);
        ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.Simulator", true));
        m_remote.emplace(m_bus.Address());
        ASSERT_TRUE(m_remote->WaitFor("Running", "true"));
    }

    /// The standard error of the simulator, until its end.
    std::string End()
    {
        m_simulator->Signal(SIGTERM);
        EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{0, 0}));
        return m_simulator->Errors();
    }

    TemporaryFolder m_folder;
    std::optional<MadeRecording> m_recording;
};

/// GetAudio of this index.
inline WireEntries AskAudio(std::string const& index, std::string const& handle = "256")
{
    return Entries({{"functionname", "GetAudio"}, {"handleID", handle}, {"index", index}});
}

inline WireEntries Answered(std::string const& audio)
{
    return Entries({{"result_internal", "1"}, {"audio", audio}});
}

} // namespace zviptv::test
