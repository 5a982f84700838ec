// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

namespace zviptv::test {

constexpr std::uint8_t PresentFollowing = 0x4E;
constexpr std::uint8_t Schedule = 0x50;

struct EitEventParts
{
    EitEventParts(); // in the .cpp: g++ 12 warns of its initializers where it is inlined

    std::uint16_t id = 1;
    Bytes start{0xEE, 0xC5, 0x12, 0x00, 0x00}; ///< 2026-03-26 12:00:00 UTC
    Bytes duration{0x01, 0x30, 0x00};
    std::uint8_t status = 0; ///< running status and free CA mode, as the upper four bits
    Bytes descriptors;
};

Bytes MakeEvent(EitEventParts const& parts);

Bytes MakeDescriptor(std::uint8_t tag, Bytes const& data);
Bytes MakeShortEvent(std::string const& language, Bytes const& title, Bytes const& text);
Bytes MakeExtendedEvent(std::string const& language, Bytes const& text, std::uint8_t number = 0);

struct EitSectionParts
{
    std::uint8_t table = PresentFollowing;
    std::uint16_t service = 1;
    std::uint8_t version = 0;
    std::uint8_t number = 0;
    std::uint8_t last = 1;
    bool current = true;
};

Bytes MakeEit(EitSectionParts const& parts, Bytes const& events);

Bytes FromText(std::string const& text);

} // namespace zviptv::test
