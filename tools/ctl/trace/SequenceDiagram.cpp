// SPDX-License-Identifier: MIT
#include "SequenceDiagram.h"

#include "DiagramStyle.h"
#include "EventText.h"
#include "common/Markup.h"
#include "output/Words.h"

#include <algorithm>

namespace zviptv::ctl {

namespace {

// In pixels.
constexpr int Margin = 16;
constexpr int TimeWidth = 130;
constexpr int LaneWidth = 240;
constexpr int DetailWidth = 780;
constexpr int HeadHeight = 44;
constexpr int RowHeight = 26;
constexpr int Top = 64;

constexpr std::size_t DetailLimit = 105; ///< characters that fit

std::string Shortened(std::string const& text, std::size_t limit)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const begins = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80;
        if (begins && ++characters > limit) {
            return text.substr(0, i) + "\u2026";
        }
    }
    return text;
}

std::string Number(int number)
{
    return std::to_string(number);
}

std::string Text(int x, int y, char const* style, std::string const& text)
{
    return text.empty() ? ""
                        : "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" class=\"" + style + "\">" +
                              EscapeMarkup(text) + "</text>";
}

std::string Line(int x1, int y1, int x2, int y2, std::string const& style)
{
    return "<line x1=\"" + Number(x1) + "\" y1=\"" + Number(y1) + "\" x2=\"" + Number(x2) + "\" y2=\"" +
           Number(y2) + "\" class=\"" + style + "\"/>";
}

int HeightOf(DiagramRow const& row)
{
    return row.kind == DiagramRow::Kind::Head ? HeadHeight : RowHeight;
}

/// Draws rows, each around its own origin.
class Painter
{
public:
    explicit Painter(std::size_t lanes)
        : m_serviceX(Margin + TimeWidth + static_cast<int>(std::max<std::size_t>(lanes, 1)) * LaneWidth)
    {
    }

    int ServiceX() const { return m_serviceX; }
    int Width() const { return m_serviceX + 120 + DetailWidth; }

    std::string Row(DiagramRow const& row, int y) const
    {
        std::string const style = row.style + (row.kind == DiagramRow::Kind::Pause ? "pause" : "");
        return "<g class=\"row " + style + "\" data-height=\"" + Number(HeightOf(row)) +
               "\" transform=\"translate(0," + Number(y) + ")\">" +
               (row.full.empty() ? "" : "<title>" + EscapeMarkup(row.full) + "</title>") + Background(row) +
               LifeLines(row) + Content(row) + "</g>\n";
    }

private:
    int LaneX(std::size_t lane) const { return Margin + TimeWidth + static_cast<int>(lane) * LaneWidth; }

    std::string Background(DiagramRow const& row) const
    {
        return "<rect class=\"background\" x=\"0\" y=\"0\" width=\"" + Number(Width()) + "\" height=\"" +
               Number(HeightOf(row)) + "\"/>";
    }

    std::string LifeLines(DiagramRow const& row) const
    {
        int const height = HeightOf(row);
        std::string lines = Line(m_serviceX, 0, m_serviceX, height, "life");
        for (std::size_t lane = 0; lane < row.lanes.size(); ++lane) {
            bool const ends = row.kind == DiagramRow::Kind::End && lane == row.lane;
            if (row.lanes[lane]) {
                lines += Line(LaneX(lane), 0, LaneX(lane), ends ? height / 2 : height, "life");
            }
        }
        return lines;
    }

    std::string Content(DiagramRow const& row) const
    {
        int const x = LaneX(row.lane);
        std::string const time = Text(Margin, 17, "time", ClockText(row.time));
        switch (row.kind) {
        case DiagramRow::Kind::Head:
            return Head(row, x);
        case DiagramRow::Kind::End:
            return time + Line(x - 6, 7, x + 6, 19, "cross") + Line(x - 6, 19, x + 6, 7, "cross") +
                   Text(x + 12, 17, "label quiet", row.label);
        case DiagramRow::Kind::Service:
            return time + "<circle class=\"dot\" cx=\"" + Number(m_serviceX) + "\" cy=\"13\" r=\"6\"/>" +
                   Text(m_serviceX + 16, 17, "label", row.label);
        case DiagramRow::Kind::Pause:
            return Text(LaneX(0), 17, "label quiet", row.label);
        default:
            return time + Arrow(row, x) + Text(m_serviceX + 24, 21, "time", row.latency) +
                   Text(m_serviceX + 110, 21, "detail", Shortened(row.detail, DetailLimit));
        }
    }

    static std::string Head(DiagramRow const& row, int x)
    {
        std::string const name = Shortened(row.label, 28);
        return "<rect class=\"head\" x=\"" + Number(x - 8) + "\" y=\"8\" rx=\"6\" width=\"" +
               Number(LaneWidth - 14) + "\" height=\"28\"/>" + Text(x + 2, 27, "name", name) +
               Line(x, 36, x, HeadHeight, "life");
    }

    std::string Arrow(DiagramRow const& row, int x) const
    {
        int const from = row.isFromService ? m_serviceX : x;
        int const to = row.isFromService ? x : m_serviceX;
        int const back = row.isFromService ? 8 : -8;
        std::string const tip =
            "<path class=\"tip\" d=\"M" + Number(to) + " 21l" + Number(back) + " -4v8z\"/>";
        return Line(from, 21, to, 21, "arrow") + tip + Text(x + 12, 16, "label", row.label);
    }

    int const m_serviceX;
};

} // namespace

std::string SequenceDiagram::Note() const
{
    std::uint64_t const left = m_rows.LeftOut();
    return left == 0 ? ""
                     : Counted(left, "more event") +
                           " are not drawn: choose fewer with --application, --endpoint or --function";
}

std::string SequenceDiagram::Picture(bool isAlone) const
{
    Painter const painter(m_rows.Lanes());
    std::string rows;
    int y = Top;
    for (DiagramRow const& row : m_rows.Rows()) {
        rows += painter.Row(row, y);
        y += HeightOf(row);
    }
    rows += Text(Margin, y + 24, "label", Note());
    std::string const size = Number(painter.Width()) + "\" height=\"" + Number(y + 40);
    int const x = painter.ServiceX();
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + "\" viewBox=\"0 0 " +
           Number(painter.Width()) + " " + Number(y + 40) +
           "\" role=\"img\" aria-label=\"Sequence diagram\">\n" +
           (isAlone ? std::string("<style>") + DiagramColours + DiagramShapes + "</style>\n" : "") +
           "<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n<rect class=\"head\" x=\"" +
           Number(x - 50) + "\" y=\"20\" rx=\"6\" width=\"100\" height=\"28\"/>" +
           Text(x - 26, 39, "name", "service") + Line(x, 48, x, Top, "life") + "\n" + rows + "</svg>\n";
}

std::string SequenceDiagram::Svg() const
{
    return Picture(true);
}

std::string SequenceDiagram::Html() const
{
    return std::string(PageHead) + DiagramColours + DiagramShapes + PageBody + Picture(false) + PageEnd;
}

} // namespace zviptv::ctl
