// SPDX-License-Identifier: MIT
#include "Variant.h"

#include "common/PrintableText.h"
#include "output/Answer.h"

#include <cmath>
#include <cstdio>

namespace zviptv::ctl {

namespace {

/// With three decimals, without zeros at the end.
std::string NumberText(double number)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", number);
    std::string shown = text;
    shown.erase(shown.find_last_not_of('0') + 1);
    return shown.back() == '.' ? shown.substr(0, shown.size() - 1) : shown;
}

} // namespace

std::string ToLine(Json::Value const& value)
{
    switch (value.type()) {
    case Json::stringValue:
        return value.empty() || value.asString().empty() ? "-" : EscapeText(value.asString());
    case Json::booleanValue:
        return value.asBool() ? "yes" : "no";
    case Json::realValue:
        return NumberText(value.asDouble());
    case Json::arrayValue:
    case Json::objectValue:
        return value.empty() ? "-" : Compact(value);
    default:
        return value.asString();
    }
}

} // namespace zviptv::ctl
