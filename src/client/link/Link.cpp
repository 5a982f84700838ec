// SPDX-License-Identifier: MIT
#include "client/link/Link.h"

#include "client/link/Context.h"
#include "client/link/Failures.h"

#include <exception>

namespace zviptv::client {

namespace {

/// The pause between attempts to connect to a missing bus.
constexpr std::chrono::milliseconds RetryInterval{500};

} // namespace

Link::Link(LinkOptions options) : m_options(std::move(options)), m_bus(m_options.busAddress, m_context.get())
{
}

Link::~Link() = default;

void Link::Begin()
{
    StartAttaching();
}

void Link::End()
{
    std::shared_ptr<Link> const self = shared_from_this(); // callbacks may drop the last other reference
    if (std::exchange(m_isEnded, true)) {
        return;
    }
    while (std::optional<CallTable::Id> const id = m_calls.First()) {
        auto const call = m_calls.Find(*id);
        Finish(*id, call->outcome ? *call->outcome : Gone(call->request.Function()));
    }
    m_pushes.End();
    m_onAvailability.Clear();
    m_onPush = nullptr;
    m_onError = nullptr;
    m_isAvailable = false;
    m_retry = Timer();
    m_attaching.reset();
    m_watch.reset();
    m_adopted.reset();
    m_bus.Close();
}

void Link::Report(Failure const& failure)
{
    auto const handler = m_onError; // it may replace itself
    try {
        if (handler) {
            handler(failure);
        }
    } catch (...) { // nothing is left to report it to
    }
}

void Link::Guard(char const* function, std::function<void()> const& code)
{
    std::string what;
    try {
        code();
        return;
    } catch (std::exception const& exception) {
        what = exception.what();
    } catch (...) {
        what = "an object that is not a std::exception";
    }
    Report({FailureKind::CallbackThrew, function, "", "", "a callback threw " + what + "; catch it there"});
}

void Link::Post(std::function<void(Link&)> work)
{
    using Posted = std::pair<std::weak_ptr<Link>, std::function<void(Link&)>>;
    using Data = UserData<std::shared_ptr<Posted const>>;
    Owned<GSource> const source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(),
        [](void* data) -> gboolean {
            auto const posted = Data::Get(data);
            std::shared_ptr<Link> const link = posted->first.lock();
            if (link != nullptr && !link->m_isEnded) {
                posted->second(*link);
            }
            return G_SOURCE_REMOVE;
        },
        Data::New(std::make_shared<Posted const>(weak_from_this(), std::move(work))), Data::Release);
    g_source_attach(source.get(), m_context.get());
}

void Link::StartAttaching()
{
    if (m_attaching != nullptr || m_isEnded) {
        return;
    }
    ContextScope const scope(m_context.get());
    m_attaching = m_bus.Attach([this](std::optional<Failure> const& failure) { OnAttached(failure); });
}

void Link::OnAttached(std::optional<Failure> const& failure)
{
    std::shared_ptr<Link> const self = shared_from_this();
    m_attaching.reset();
    if (std::shared_ptr<Attachment> const attachment = m_bus.Current()) {
        Adopt(attachment);
        ProceedWaiting(std::nullopt);
        return;
    }
    m_retry = Timer(m_context.get(), RetryInterval, [this] { StartAttaching(); });
    FailWaiting(std::nullopt, failure ? *failure : NoBus("", "the bus closed the connection"));
}

void Link::Adopt(std::shared_ptr<Attachment> const& attachment)
{
    if (attachment == m_adopted || m_isEnded) {
        return;
    }
    m_adopted = attachment;
    m_isAnnouncing = {};
    ContextScope const scope(m_context.get());
    m_watch = std::make_unique<ServiceWatch>(
        attachment->Connection(),
        ServiceWatch::Reports{[this](std::string const& owner) { OnOwner(owner); }, [this] { OnClosed(); }});
}

void Link::OnOwner(std::string const& owner)
{
    std::shared_ptr<Link> const self = shared_from_this();
    std::string const former = std::exchange(m_owner, owner);
    if (former == owner) {
        return;
    }
    if (!former.empty()) {
        m_adopted->ForgetPartners();
        m_pushes.Forget();
        SetAvailable(false);
        FailSent();
    }
    if (!m_isEnded && !m_owner.empty()) {
        SetAvailable(true);
        m_pushes.Resume();
    }
}

void Link::OnClosed()
{
    std::shared_ptr<Link> const self = shared_from_this();
    m_owner.clear();
    m_watch.reset(); // changes that it has not told yet are those of the bus that has gone
    m_adopted.reset();
    m_pushes.Forget();
    SetAvailable(false);
    StartAttaching(); // immediately: the bus may have restarted already
}

void Link::SetAvailable(bool isAvailable)
{
    if (m_isAvailable.exchange(isAvailable) == isAvailable) {
        return;
    }
    m_onAvailability.ForEach([this, isAvailable](std::function<void(bool)> const& listener) {
        // It has changed if a listener has iterated the context. Then all have been told.
        if (m_isAvailable == isAvailable) {
            Guard("OnAvailability", [&] { listener(isAvailable); });
        }
    });
}

Listener Link::OnAvailability(std::function<void(bool)> listener)
{
    return m_onAvailability.Add(std::move(listener));
}

void Link::OnPush(CMessageBuffer& message)
{
    if (auto const handler = m_onPush) { // it may replace itself
        handler(message);
    }
}

void Link::OnPusherLost()
{
    m_pushes.Forget();
    if (m_isAvailable) { // otherwise when it is available again
        m_pushes.Resume();
    }
}

} // namespace zviptv::client
