// SPDX-License-Identifier: MIT
#pragma once

#include "DiagramRows.h"

#include <string>

namespace zviptv::ctl {

/// Draws a sequence diagram: time down the page, a lane for each application, the service at their right.
class SequenceDiagram
{
public:
    void Add(trace::Event const& event) { m_rows.Add(event); }

    /// A picture, in light or dark colours as the viewer prefers.
    std::string Svg() const;

    /// A page without references to other files: the picture, a field that searches it, and the whole message
    /// on a click.
    std::string Html() const;

private:
    std::string Picture(bool isAlone) const;
    std::string Note() const;

    DiagramRows m_rows;
};

} // namespace zviptv::ctl
