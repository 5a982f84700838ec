// SPDX-License-Identifier: MIT
#pragma once

#include <tuple>

namespace zviptv::ctl {

/// The notation of a number.
enum class Notation
{
    Plain,
    Hexadecimal ///< for identifiers that standards write in hexadecimal: 0x0101, with all digits of the type
};

template <typename Record, typename Member>
struct Field
{
    char const* name;
    Member Record::*member;
    Notation notation = Notation::Plain;
};

template <typename Record, typename Member>
Field(char const*, Member Record::*) -> Field<Record, Member>;
template <typename Record, typename Member>
Field(char const*, Member Record::*, Notation) -> Field<Record, Member>;

/// The fields of a record without reserved bytes, in declaration order. Specialised in ProtocolTypes.h, which
/// is generated.
template <typename Record>
struct RecordInfo;

/// Calls `visit` with every Field of the record, in order.
template <typename Record, typename Visitor>
void ForEachField(Visitor visit)
{
    std::apply([&](auto const&... field) { (visit(field), ...); }, RecordInfo<Record>::fields);
}

} // namespace zviptv::ctl
