// SPDX-License-Identifier: MIT
#include "Captions.h"

#include "Convert.h"

#include <memory>

namespace zviptv::python {

namespace {

char const* const CaptionModule = "zviptv._caption";

py::object ToColour(Colour value)
{
    return Class(CaptionModule, "Colour")(value.red, value.green, value.blue);
}

py::object ToRun(CaptionRun const& value)
{
    return Class(CaptionModule, "CaptionRun")(ToPython(value.text), ToColour(value.foreground),
                                              value.background ? ToColour(*value.background) : py::none(),
                                              value.isDoubleHeight, value.isDoubleWidth, value.isSmall,
                                              value.isFlashing);
}

py::object ToLine(CaptionLine const& value)
{
    py::list runs;
    for (CaptionRun const& run : value.runs) {
        runs.append(ToRun(run));
    }
    return Class(CaptionModule, "CaptionLine")(py::tuple(runs));
}

unsigned ToPage(py::handle page, char const* name)
{
    std::int64_t const first = 100;
    std::int64_t const last = 899;
    return static_cast<unsigned>(Integer(page, name, first, last));
}

} // namespace

py::object ToPython(Caption const& value)
{
    py::list lines;
    for (CaptionLine const& line : value.lines) {
        lines.append(ToLine(line));
    }
    return Class(CaptionModule, "Caption")(Class(CaptionModule, "CaptionKind")(py::str(ToString(value.kind))),
                                           value.page, ToPython(value.language), ToPython(value.pid),
                                           ToPython(value.pts), py::tuple(lines));
}

TeletextPages ToPages(py::object const& pages, py::object const& languages)
{
    TeletextPages teletext;
    if (PyIndex_Check(pages.ptr()) != 0) {
        teletext.pages.insert(ToPage(pages, "pages"));
    } else if (!pages.is_none()) {
        for (py::handle const page : py::iter(pages)) {
            teletext.pages.insert(ToPage(page, "pages"));
        }
    }
    if (!languages.is_none()) {
        if (!py::hasattr(languages, "items")) {
            throw py::type_error(std::string("languages: expected a mapping, got ") +
                                 Py_TYPE(languages.ptr())->tp_name);
        }
        for (py::handle const item : py::iter(languages.attr("items")())) {
            auto const pair = py::reinterpret_borrow<py::tuple>(item);
            teletext.languages[ToPage(pair[0], "languages")] = FromPython<std::string>(pair[1], "languages");
        }
    }
    return teletext;
}

void BindCaptions(py::module_& module)
{
    py::class_<CaptionDecoder>(module, "CaptionDecoder",
                               "Decodes teletext subtitles and ARIB captions: a decoder of the right kind "
                               "for each of up to 16 streams.")
        .def(py::init([](py::object const& pages, py::object const& languages) {
                 return std::make_unique<CaptionDecoder>(ToPages(pages, languages));
             }),
             py::arg("pages") = py::none(), py::arg("languages") = py::none())
        .def("decode",
             [](CaptionDecoder& self, PesPacket const& data) { return ToPython(self.Decode(data)); })
        .def("decode",
             [](CaptionDecoder& self, CaptionData const& data) { return ToPython(self.Decode(data)); })
        .def_static("decodes_teletext", &TeletextDecoder::IsAvailable)
        .def_static("decodes_arib", &AribCaptionDecoder::IsAvailable);
}

} // namespace zviptv::python
