// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Session.h>
#include <zviptv/testing/Verbs.h>

// A simulated television for tests with GoogleTest. Link with ZvIptv::Testing and GTest::gtest.

namespace zviptv::simulated {

/// A scenario that runs from its creation until it is over or Wait() ends it. If Wait() was not called, the
/// destructor calls it and adds a failure to the test.
class RunningScenario
{
public:
    /// Starts it. @throws TelevisionError with all errors of the text
    RunningScenario(Session& session, std::string const& text, std::string const& file) : m_session(&session)
    {
        Handle<GVariant> const result = session.Call("StartScenario", {NewVariant(text), NewVariant(file)});
        g_variant_get(result.get(), "(u)", &m_number);
        session.TheConversation().Note("test", "scenario");
    }
    /// Takes over the scenario; `other` must not be used any more.
    RunningScenario(RunningScenario&& other) noexcept
        : m_session(std::exchange(other.m_session, nullptr)), m_number(other.m_number)
    {
    }
    RunningScenario& operator=(RunningScenario&&) = delete;
    ~RunningScenario()
    try {
        if (m_session != nullptr) {
            EXPECT_TRUE(Wait());
        }
    } catch (std::exception const& failure) {
        ADD_FAILURE() << failure.what();
    }

    /// Waits until the scenario is over, at most this long, and then ends it. Returns a failure with the
    /// report if an expectation is not met or a verb was refused. Call it once.
    testing::AssertionResult Wait(Seconds within = Seconds(30))
    {
        Session& session = *std::exchange(m_session, nullptr);
        Handle<GVariant> const result = session.Call(
            "EndScenario", {NewVariant(m_number), NewVariant(within.count())}, within + Seconds(20));
        gboolean isMet = FALSE;
        char const* report = nullptr;
        g_variant_get(result.get(), "(b&s)", &isMet, &report);
        return isMet != FALSE ? testing::AssertionSuccess()
                              : testing::AssertionFailure() << WithoutName(report);
    }

private:
    /// The report without the name of the program at its beginning.
    static std::string WithoutName(std::string const& report)
    {
        std::string const name = "zviptv-sim: ";
        return report.compare(0, name.size(), name) == 0 ? report.substr(name.size()) : report;
    }

    Session* m_session;
    std::uint32_t m_number = 0;
};

/// The television of one test: controls it, and sees what applications ask of it. Each object begins with a
/// fresh television. All objects of a process use one simulator, which the first one starts unless the test
/// program runs in zviptv-sim. Make it before the objects of the application: the first Television sets
/// DBUS_SYSTEM_BUS_ADDRESS. To be used by one thread at a time.
class Television final : public Verbs
{
public:
    /// Resets the simulator. @throws TelevisionError if it does not start, or runs with other options
    explicit Television(Options const& options = {}) : m_session(Session::Get(options)) { Reset(); }

    /// Waits until an application sends such a request. One that came earlier counts, unless it has met
    /// another expectation. Arguments that are not given may have any value.
    /// @throws std::invalid_argument for an unknown function or argument
    testing::AssertionResult Expect(std::string const& function, Arguments const& arguments = {},
                                    Seconds within = Seconds(2))
    {
        std::string const text = CheckedText(function, arguments);
        m_session.Settle();
        if (Log().Take(function, arguments, within)) {
            return testing::AssertionSuccess();
        }
        std::string const near = Log().NearMisses(function);
        Log().Note("test", "expect " + text, "not met");
        m_session.Settle(); // throws if the simulator has died
        return testing::AssertionFailure()
               << text << " did not come within " << Duration(within.count()) << ": " << near;
    }

    /// Checks that no such request has come, unless it has met an expectation, and that none comes for the
    /// given time. @throws std::invalid_argument for an unknown function or argument
    testing::AssertionResult ExpectNo(std::string const& function, Arguments const& arguments = {},
                                      Seconds duration = Seconds(0.5))
    {
        std::string const text = CheckedText(function, arguments);
        m_session.Settle();
        std::optional<Request> const request = Log().Take(function, arguments, duration);
        if (!request) {
            m_session.Settle(); // throws if the simulator has died
            return testing::AssertionSuccess();
        }
        Log().Note("test", "expect no " + text, "not met");
        return testing::AssertionFailure()
               << request->Text() << " was not expected, but came after " << PointInTime(request->seconds);
    }

    /// Starts a scenario, whose second 0 is now. Its files are relative to `folder`, by default that in which
    /// the simulator was started. @throws TelevisionError with all errors of the text
    [[nodiscard]] RunningScenario Scenario(std::string const& text, std::string const& folder = "")
    {
        return RunningScenario(m_session, text, folder.empty() ? "scenario" : folder + "/scenario");
    }

    /// All requests that were answered between the reset and this call, in their order.
    std::vector<Request> Requests()
    {
        m_session.Settle();
        return Log().Requests();
    }

    /// A property of the control interface as it is now, as GVariant prints it: `true`, `1.5`, `'playing'`.
    std::string Property(std::string const& name)
    {
        Handle<GVariant> const value(
            g_variant_lookup_value(m_session.Properties().get(), name.c_str(), nullptr));
        if (!value) {
            throw std::invalid_argument("unknown property '" + name +
                                        "'; 'zviptvctl sim status' lists the properties");
        }
        Handle<char> const text(g_variant_print(value.get(), FALSE));
        return text.get();
    }

    /// What has happened since the reset, as a table. A failing test prints it.
    std::string ConversationTable() { return Log().Table(); }

private:
    simulated::Conversation& Log() { return m_session.TheConversation(); }

    void Do(char const* verb, char const* method, Variants const& values) override
    {
        m_session.Do(verb, method, values);
    }

    Session& m_session;
};

} // namespace zviptv::simulated
