// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Simulator.h>

#include <gtest/gtest.h>

#include <iostream>

namespace zviptv::simulated {

/// The simulator of this process and the connection with it.
class Session
{
public:
    /// The simulator, which is started first if the process does not run in zviptv-sim. It ends with the test
    /// program. @throws TelevisionError
    static Session& Get(Options const& options)
    {
        std::unique_ptr<Session>& session = Instance();
        if (!session) {
            session.reset(new Session(options));
            testing::UnitTest::GetInstance()->listeners().Append(new Listener);
        } else if (!(options == session->m_options)) {
            throw TelevisionError(
                "the simulator of this process runs with other options; use the same options "
                "in all tests of a program");
        }
        session->m_isUsed = true;
        return *session;
    }

    /// What has happened since the reset.
    Conversation& TheConversation() { return *m_conversation; }

    /// Calls a method of the control interface. @throws TelevisionError
    Handle<GVariant> Call(char const* method, Variants values, Seconds timeout = Seconds(20))
    {
        return Guarded([&] { return m_control->Call(method, values, timeout); });
    }

    /// All properties of the control interface, an a{sv}. @throws TelevisionError
    Handle<GVariant> Properties()
    {
        return Guarded([this] { return m_control->Properties(); });
    }

    /// Waits until the conversation contains all requests that the service has answered before this call. The
    /// simulator sends its messages in order.
    void Settle() { Properties(); }

    /// Performs a verb. @throws TelevisionError
    void Do(char const* verb, char const* method, Variants values)
    {
        std::string text = verb;
        for (GVariant* const value : values) {
            text += InWords(value);
        }
        std::size_t const number = m_conversation->Note("test", text);
        try {
            Call(method, values);
        } catch (TelevisionError const& failure) {
            m_conversation->SetAnswer(number, failure.what());
            throw;
        }
        if (std::strcmp(method, "Reset") == 0) {
            m_conversation->Clear();
            m_conversation->Note("test", text);
        }
    }

private:
    /// Prints the conversation of a failing test, and ends the simulator.
    class Listener : public testing::EmptyTestEventListener
    {
        void OnTestStart(testing::TestInfo const& /*test*/) override { Use(false); }

        void OnTestEnd(testing::TestInfo const& test) override
        {
            if (test.result()->Failed() && Instance() && Instance()->m_isUsed) {
                std::cout << "Conversation with the television:\n" << Instance()->Table() << std::flush;
            }
        }

        void OnTestProgramEnd(testing::UnitTest const& /*all*/) override { Instance().reset(); }

        static void Use(bool isUsed)
        {
            if (Instance()) {
                Instance()->m_isUsed = isUsed;
            }
        }
    };

    explicit Session(Options const& options) : m_options(options)
    {
        char const* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
        if (std::getenv("ZVIPTV_SIM_PID") == nullptr || address == nullptr) {
            m_simulator = std::make_unique<Simulator>(options);
            address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
        } else if (!(options == Options{})) {
            throw TelevisionError(
                "the simulator runs already, and its options cannot be changed; pass them to "
                "zviptv_add_television_test");
        }
        m_control = std::make_unique<Control>(address, m_conversation);
    }

    static std::unique_ptr<Session>& Instance()
    {
        static std::unique_ptr<Session> instance;
        return instance;
    }

    std::string Table()
    {
        try {
            Settle();
        } catch (TelevisionError const&) { // it may be why the test failed
        }
        return m_conversation->Table();
    }

    template <typename Work>
    Handle<GVariant> Guarded(Work work)
    {
        try {
            return work();
        } catch (NoAnswer const&) {
            if (m_simulator) {
                m_simulator->Check();
            }
            throw;
        }
    }

    Options m_options;
    std::shared_ptr<Conversation> m_conversation = std::make_shared<Conversation>();
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<Control> m_control;
    bool m_isUsed = false; ///< by the test that runs
};

} // namespace zviptv::simulated
