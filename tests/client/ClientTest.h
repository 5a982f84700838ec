// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "FakeService.h"
#include "LoopRunner.h"
#include "PrivateBus.h"

#include <zviptv/client/Client.h>

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

/// The result that a completion received.
template <class T>
class Outcome
{
public:
    /// For an asynchronous call. The outcome may end before the call.
    Completion<T> Take()
    {
        return [seen = m_seen](Result<T> result) { seen->push_back(std::move(result)); };
    }

    /// Runs the loop until the completion has run; false after the patience of the tests.
    bool Await() const
    {
        return RunUntil([this] { return IsThere(); });
    }
    bool IsThere() const { return !m_seen->empty(); }
    std::size_t Count() const { return m_seen->size(); }
    Result<T> const& operator*() const { return m_seen->at(0); }
    Result<T> const* operator->() const { return &m_seen->at(0); }

private:
    std::shared_ptr<std::vector<Result<T>>> m_seen = std::make_shared<std::vector<Result<T>>>();
};

/// Whether a call succeeded; otherwise its failure.
template <class T>
testing::AssertionResult Succeeded(Result<T> const& result)
{
    return result ? testing::AssertionSuccess()
                  : testing::AssertionFailure() << ToString(result.GetFailure());
}

/// The kind of a call's failure in words; "success" for none.
template <class T>
std::string KindOf(Result<T> const& result)
{
    return result ? "success" : ToString(result.GetFailure().kind);
}

/// A private bus without a service. Nobody iterates the default context but the test.
class ClientTest : public testing::Test
{
protected:
    PrivateBus m_bus;
};

/// A private bus with a service that answers every request with "result_internal" 1.
class ServiceClientTest : public ClientTest
{
protected:
    /// Makes the service leave the bus, as if it was killed.
    void KillService() { m_service.reset(); }
    void StartService(std::function<void(FakeService&)> const& script = {})
    {
        m_service = std::make_unique<FakeService>(m_bus.Address(), script);
    }

    std::unique_ptr<FakeService> m_service = std::make_unique<FakeService>(m_bus.Address());
};

/// The same fixture with a television.
class TelevisionTest : public ServiceClientTest
{
protected:
    /// Runs the loop until the television reports this availability of the service.
    bool AwaitAvailable(bool isAvailable)
    {
        return RunUntil([&] { return m_television->IsAvailable() == isAvailable; });
    }
    Player& player() { return m_television->Player(); }

    std::unique_ptr<Television> m_television = std::make_unique<Television>();
};

} // namespace zviptv::test
