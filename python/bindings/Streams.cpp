// SPDX-License-Identifier: MIT
#include "Streams.h"

#include "Captions.h"
#include "Convert.h"
#include "Packets.h"
#include "State.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <string>

namespace zviptv::python {

namespace {

/// Waits without the GIL until the descriptor is readable, for at most `most`.
void WaitFor(int descriptor, std::chrono::milliseconds most)
{
    py::gil_scoped_release const release;
    pollfd polled{descriptor, POLLIN, 0};
    poll(&polled, 1, static_cast<int>(most.count()));
}

/// Adds items, if the stream exists.
template <class Item>
void Add(std::weak_ptr<Feed<Item>> const& weak, Item const* items, std::size_t number)
{
    auto const feed = weak.lock();
    if (feed == nullptr) {
        return;
    }
    // The status comes first: Python reads it once it has the item.
    if constexpr (std::is_same_v<Item, StateEvent>) {
        if (auto const* const watcher = std::get_if<StateWatcher>(&feed->source)) {
            feed->SetStatus(watcher->State());
        }
    } else if (auto const* const subscription = std::get_if<Subscription>(&feed->source)) {
        feed->SetStatus(subscription->Counters());
    }
    for (Item const* item = items; item != items + number; ++item) {
        feed->queue->Push(*item);
    }
}

template <class Item>
void Add(std::weak_ptr<Feed<Item>> const& weak, Item const& item)
{
    Add(weak, &item, 1);
}

template <class Item>
py::object ToItem(Item const& item)
{
    if constexpr (std::is_same_v<Item, PesPacket> || std::is_same_v<Item, CaptionData>) {
        return py::cast(item);
    } else if constexpr (std::is_same_v<Item, Failure>) {
        return ToException(item);
    } else {
        return ToPython(item);
    }
}

PesFilter Filter(py::list const& pids, py::list const& kinds)
{
    PesFilter filter;
    constexpr std::int64_t LastPid = 0x1FFF;
    for (py::handle const pid : pids) {
        filter.pids.insert(static_cast<std::uint16_t>(Integer(pid, "pid", 0, LastPid)));
    }
    for (py::handle const kind : kinds) {
        filter.kinds.insert(FromPython<PesKind>(kind, "kind"));
    }
    return filter;
}

Stream<PesPacket> Pes(std::shared_ptr<Core> const& core, py::list const& pids, py::list const& kinds,
                      py::object const& limit)
{
    Stream<PesPacket> stream(core, Limit(limit));
    stream.Begin([filter = Filter(pids, kinds)](Television& television, auto const& feed) {
        return television.SubscribePes(filter, [feed](PesPacket const& packet) { Add(feed, packet); });
    });
    return stream;
}

Stream<CaptionData> Captions(std::shared_ptr<Core> const& core, py::object const& limit)
{
    Stream<CaptionData> stream(core, Limit(limit));
    stream.Begin([](Television& television, auto const& feed) {
        return television.SubscribeCaptions([feed](CaptionData const& data) { Add(feed, data); });
    });
    return stream;
}

Stream<Caption> CaptionTexts(std::shared_ptr<Core> const& core, py::object const& pages,
                             py::object const& languages, py::object const& limit)
{
    Stream<Caption> stream(core, Limit(limit));
    auto const decoder = std::make_shared<CaptionDecoder>(ToPages(pages, languages));
    stream.Begin([decoder](Television& television, auto const& feed) {
        PesFilter const filter{{}, {PesKind::Teletext, PesKind::Caption}};
        return television.SubscribePes(filter, [decoder, feed](PesPacket const& packet) {
            std::vector<Caption> const captions = decoder->Decode(packet);
            Add(feed, captions.data(), captions.size());
        });
    });
    return stream;
}

Stream<StateEvent> Watch(std::shared_ptr<Core> const& core, py::object const& interval,
                         py::object const& serviceId, py::object const& limit)
{
    StateOptions options{Milliseconds(interval, "interval"), std::nullopt};
    if (!serviceId.is_none()) {
        options.serviceId = Unsigned(serviceId, "service_id");
    }
    Stream<StateEvent> stream(core, Limit(limit));
    stream.Begin([options](Television& television, auto const& feed) {
        return StateWatcher(television, options, [feed](StateEvent const& event) { Add(feed, event); });
    });
    return stream;
}

Stream<bool> Availability(std::shared_ptr<Core> const& core, py::object const& limit)
{
    Stream<bool> stream(core, Limit(limit));
    stream.Begin([](Television& television, auto const& feed) {
        Add(feed, television.IsAvailable());
        return television.OnAvailability([feed](bool isAvailable) { Add(feed, isAvailable); });
    });
    return stream;
}

Stream<Failure> Errors(std::shared_ptr<Core> const& core, py::object const& limit)
{
    Stream<Failure> stream(core, Limit(limit));
    stream.Begin([&core](std::shared_ptr<Queue<Failure>> const& queue) { core->AddErrors(queue); });
    return stream;
}

template <class Item>
py::class_<Stream<Item>> BindStream(py::module_& module, char const* name)
{
    return py::class_<Stream<Item>>(module, name)
        .def("poll", &Stream<Item>::Poll)
        .def("get", &Stream<Item>::Get, py::arg("timeout") = py::none())
        .def("fileno", &Stream<Item>::Descriptor)
        .def("end", &Stream<Item>::End)
        .def_property_readonly("has_ended", &Stream<Item>::HasEnded)
        .def_property_readonly("dropped", &Stream<Item>::Dropped)
        .def_property_readonly("counters", [](Stream<Item> const& stream) {
            PushCounters counters;
            if constexpr (!std::is_same_v<Item, StateEvent>) {
                counters = stream.Status();
            }
            return Class("zviptv._stream", "Counters")(counters.packets, counters.bytes, counters.gaps,
                                                       stream.Dropped());
        });
}

} // namespace

template <class Item>
Stream<Item>::Stream(std::shared_ptr<Core> const& core, std::size_t limit)
    : m_core(core), m_feed(std::make_shared<Feed<Item>>(limit))
{
}

template <class Item>
template <class Subscribe>
void Stream<Item>::Begin(Subscribe subscribe)
{
    auto const core = m_core.lock();
    Core::Stay const stay(*core);
    if constexpr (std::is_invocable_v<Subscribe, std::shared_ptr<Queue<Item>> const&>) {
        subscribe(m_feed->queue);
    } else {
        core->Post([subscribe = std::move(subscribe), feed = m_feed](Television& television) {
            // The callback does not own the feed: the feed owns the subscription, which owns the callback.
            feed->source = subscribe(television, std::weak_ptr(feed));
        });
    }
    core->CloseWithThis(m_feed->queue);
}

template <class Item>
py::object Stream<Item>::Poll()
{
    CheckNotForked();
    std::optional<Item> const item = m_feed->queue->Pop();
    return item ? ToItem(*item) : py::none();
}

template <class Item>
py::object Stream<Item>::Get(py::object const& timeout)
{
    using Clock = std::chrono::steady_clock;
    using std::chrono::milliseconds;
    milliseconds const mostWait(100); // signals may be handled by other threads
    std::optional<Clock::time_point> end;
    if (!timeout.is_none()) {
        end = Clock::now() + Milliseconds(timeout, "timeout");
    }
    auto const core = m_core.lock();
    for (;;) {
        CheckNotForked();
        if (std::optional<Item> const item = m_feed->queue->Pop()) {
            return ToItem(*item);
        }
        bool isStaying = false;
        std::optional<Core::Stay> stay;
        if (core != nullptr) {
            stay.emplace(*core, isStaying);
        }
        if (!isStaying || HasEnded()) {
            throw py::stop_iteration();
        }
        milliseconds wait = mostWait;
        if (end) {
            auto const left = std::chrono::ceil<milliseconds>(*end - Clock::now());
            if (left.count() <= 0) {
                PyErr_SetString(PyExc_TimeoutError, "no item arrived in time");
                throw py::error_already_set();
            }
            wait = std::min(wait, left);
        }
        WaitFor(Descriptor(), wait);
        if (PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
    }
}

template <class Item>
void Stream<Item>::End()
{
    if (m_feed == nullptr || m_isEnded) {
        return;
    }
    if (IsForkedChild()) {
        new std::shared_ptr<Feed<Item>>(m_feed); // its locks may be held for ever
        return;
    }
    m_isEnded = true;
    m_feed->queue->Close();
    auto const core = m_core.lock();
    if (core != nullptr &&
        !core->Post([feed = m_feed](Television& /*television*/) { feed->source = std::monostate(); })) {
        core->Retain(m_feed); // the television may be using it
    }
}

template <class Item>
void Stream<Item>::Refresh()
{
    auto const core = m_core.lock();
    if (core != nullptr && !m_isEnded) {
        core->Post([feed = m_feed](Television& /*television*/) {
            if (auto* const watcher = std::get_if<StateWatcher>(&feed->source)) {
                watcher->Refresh();
            }
        });
    }
}

void BindStreams(py::module_& module, py::class_<Core, std::shared_ptr<Core>>& core)
{
    BindPackets(module);
    BindStream<PesPacket>(module, "PesStream");
    BindStream<CaptionData>(module, "CaptionStream");
    BindCaptions(module);
    BindStream<Caption>(module, "CaptionTextStream");
    BindStream<StateEvent>(module, "StateStream")
        .def("refresh", &Stream<StateEvent>::Refresh)
        .def_property_readonly("state",
                               [](Stream<StateEvent> const& stream) { return ToPython(stream.Status()); });
    BindStream<bool>(module, "AvailabilityStream");
    BindStream<Failure>(module, "FailureStream");
    core.def("pes", &Pes)
        .def("captions", &Captions)
        .def("caption_texts", &CaptionTexts)
        .def("watch", &Watch)
        .def("availability", &Availability)
        .def("errors", &Errors);
}

} // namespace zviptv::python
