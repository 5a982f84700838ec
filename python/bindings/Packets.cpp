// SPDX-License-Identifier: MIT
#include "Packets.h"

#include "Convert.h"

#include <zviptv/client/PesPacket.h>

namespace zviptv::python {

namespace {

template <class Item>
py::buffer_info Buffer(Item const& item)
{
    ByteView const bytes = item.Data();
    static std::uint8_t const none = 0;
    std::uint8_t const* const data = bytes.Size() == 0 ? &none : bytes.Data();
    return py::buffer_info(data, static_cast<py::ssize_t>(bytes.Size()), /*readonly=*/true);
}

/// A memoryview of `size` bytes from `begin` on. It keeps the packet alive.
py::object View(py::handle item, std::size_t begin, std::size_t size)
{
    auto const whole = py::reinterpret_steal<py::object>(PyMemoryView_FromObject(item.ptr()));
    if (!whole) {
        throw py::error_already_set();
    }
    auto const number = [](std::size_t value) { return static_cast<py::ssize_t>(value); };
    return whole[py::slice(number(begin), number(begin + size), 1)];
}

py::object Payload(py::object const& self)
{
    auto const& packet = self.cast<PesPacket const&>();
    ByteView const payload = packet.Payload();
    std::size_t const begin =
        payload.Size() == 0 ? 0 : static_cast<std::size_t>(payload.Data() - packet.Data().Data());
    return View(self, begin, payload.Size());
}

template <class Item>
py::object Data(py::object const& self)
{
    return View(self, 0, self.cast<Item const&>().Data().Size());
}

template <class Item>
py::object Kind(Item const& item)
{
    return Class("zviptv._types", "PesKind")(static_cast<int>(item.Kind()));
}

std::string Description(PesPacket const& packet)
{
    std::string const pts = packet.Pts() ? std::to_string(*packet.Pts()) : "None";
    std::string const kind = py::str(Kind(packet).attr("name"));
    return "<PesPacket pid=" + std::to_string(packet.Pid()) + " kind=" + kind + " pts=" + pts +
           " size=" + std::to_string(packet.Data().Size()) + ">";
}

} // namespace

void BindPackets(py::module_& module)
{
    py::class_<PesPacket>(module, "PesPacket", py::buffer_protocol(),
                          "One PES packet. It is a buffer of all its bytes, which are shared with the "
                          "message that brought them.")
        .def_buffer([](PesPacket& packet) { return Buffer(packet); })
        .def_property_readonly("pid", &PesPacket::Pid, "PID of the stream, 0 to 0x1fff.")
        .def_property_readonly("kind", &Kind<PesPacket>, "What the stream carries, as the service says.")
        .def_property_readonly("has_header", &PesPacket::HasHeader,
                               "Whether the packet has a complete header of MPEG-2. Otherwise the values of "
                               "the header are 0, None or empty.")
        .def_property_readonly("stream_id", &PesPacket::StreamId,
                               "The stream_id, such as 0xbd for private data and 0xe0 for the first video.")
        .def_property_readonly("length", &PesPacket::Length,
                               "The PES_packet_length in bytes; 0 for a packet of open length.")
        .def_property_readonly(
            "pts", [](PesPacket const& packet) { return ToPython(packet.Pts()); },
            "Presentation time stamp in 1/90000 s, 33 bits; None if there is none.")
        .def_property_readonly(
            "dts", [](PesPacket const& packet) { return ToPython(packet.Dts()); },
            "Decoding time stamp in 1/90000 s, 33 bits; None unless it differs from the PTS.")
        .def_property_readonly(
            "payload", &Payload,
            "The bytes after the header, a read-only memoryview that keeps the packet alive.")
        .def_property_readonly(
            "data", &Data<PesPacket>,
            "The whole packet with its header, a read-only memoryview that keeps the packet alive.")
        .def("__repr__", &Description);
    py::class_<CaptionData>(module, "CaptionData", py::buffer_protocol(),
                            "A piece of caption data as it was broadcast. It is a buffer, as PesPacket is.")
        .def_buffer([](CaptionData& data) { return Buffer(data); })
        .def_property_readonly("kind", &Kind<CaptionData>, "TELETEXT or CAPTION, as the service says.")
        .def_property_readonly("data", &Data<CaptionData>,
                               "The data units of teletext subtitles, or the payload of a PES packet of ARIB "
                               "captions, a read-only memoryview.");
}

} // namespace zviptv::python
