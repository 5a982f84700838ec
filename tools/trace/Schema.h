// SPDX-License-Identifier: MIT
#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zviptv::trace {

template <typename Value>
using Named = std::map<std::string, Value, std::less<>>;

/// The encoding of a value.
enum class Form
{
    Flag,
    Signed, ///< decimal text, like the next one
    Unsigned,
    Enumeration,
    Text,
    Bytes,
    Record,    ///< bytes in a fixed layout, or several successive records
    JsonRecord ///< a JSON object
};

struct Enumeration
{
    bool isLanguage = false; ///< the number contains the letters of an ISO 639 code
    std::map<std::int64_t, std::string> names;
};

struct Record;

/// The type of a value. Pointers that the form does not need are null.
struct ValueType
{
    Form form = Form::Text;
    Enumeration const* enumeration = nullptr;
    Record const* record = nullptr;
    bool isList = false; ///< several records
};

struct RecordField
{
    std::string name;
    std::size_t offset = 0;
    std::size_t size = 0;
    bool isHexadecimal = false;
    Enumeration const* enumeration = nullptr;
};

struct Record
{
    std::size_t size = 0;
    std::vector<RecordField> fields;
};

/// A function or a notification: the types of its values by key.
struct Function
{
    Named<ValueType> request;
    Named<ValueType> reply;
};

/// The description of the protocol, indexed for decoding.
class Schema
{
public:
    /// The only instance. Any thread.
    static Schema const& Get();

    Schema(Schema const&) = delete;
    Schema& operator=(Schema const&) = delete;

    /// Null for an unknown endpoint or function.
    Function const* Find(std::string_view endpoint, std::string_view function) const;

    std::string helperName;
    std::string helperInterface;
    std::string helperMember;
    Function announcement; ///< to the helper bus, and its answer

    std::string channelPath; ///< without the type word
    std::string channelInterface;
    std::string requestMember;
    std::string notificationMember;
    Named<ValueType> common; ///< of keys that every message of a channel may have

private:
    explicit Schema(Json::Value const& description);

    ValueType TypeOf(std::string const& name) const;
    Named<ValueType> TypesOf(Json::Value const& values) const;
    void AddRecord(Json::Value const& description);

    Named<Enumeration> m_enumerations;
    Named<Record> m_records;
    Named<Named<Function>> m_endpoints;
};

} // namespace zviptv::trace
