// SPDX-License-Identifier: MIT
#include "WireCodec.h"

#include <memory>

namespace zviptv::test {

namespace {

struct DBusFree
{
    void operator()(char* text) const { dbus_free(text); }
};

std::string TextOrEmpty(char const* text)
{
    return text != nullptr ? text : "";
}

std::string SignatureAt(DBusMessageIter* iter)
{
    std::unique_ptr<char, DBusFree> const text(dbus_message_iter_get_signature(iter));
    return TextOrEmpty(text.get());
}

std::string StringAt(DBusMessageIter* iter)
{
    char const* text = nullptr;
    dbus_message_iter_get_basic(iter, &text);
    return TextOrEmpty(text);
}

std::string BytesAt(DBusMessageIter* array)
{
    DBusMessageIter element;
    dbus_message_iter_recurse(array, &element);
    if (dbus_message_iter_get_arg_type(&element) != type::Byte) {
        return {};
    }
    char const* data = nullptr;
    int size = 0;
    dbus_message_iter_get_fixed_array(&element, &data, &size);
    return std::string(data, static_cast<std::size_t>(size));
}

WireEntry EntryAt(DBusMessageIter* dictEntry)
{
    DBusMessageIter field;
    dbus_message_iter_recurse(dictEntry, &field);
    WireEntry entry;
    entry.key = StringAt(&field);
    dbus_message_iter_next(&field);

    DBusMessageIter content;
    dbus_message_iter_recurse(&field, &content);
    entry.signature = SignatureAt(&content);
    if (entry.signature == "ay") {
        entry.bytes = BytesAt(&content);
    }
    return entry;
}

WirePair PairAt(DBusMessageIter* structure)
{
    DBusMessageIter field;
    dbus_message_iter_recurse(structure, &field);
    std::string key = StringAt(&field);
    dbus_message_iter_next(&field);
    return {std::move(key), StringAt(&field)};
}

template <typename Read>
void ForEachElement(DBusMessageIter* array, Read const& read)
{
    DBusMessageIter element;
    dbus_message_iter_recurse(array, &element);
    while (dbus_message_iter_get_arg_type(&element) != type::None) {
        read(&element);
        dbus_message_iter_next(&element);
    }
}

void DecodeArgument(DBusMessageIter* argument, bool first, WireMessage& decoded)
{
    std::string const signature = SignatureAt(argument);
    if (signature == "s" || signature == "o" || signature == "g") {
        decoded.strings.push_back(StringAt(argument));
    } else if (signature == "as") {
        ForEachElement(argument, [&](DBusMessageIter* at) { decoded.strings.push_back(StringAt(at)); });
    } else if (first && signature == "a{sv}") {
        ForEachElement(argument, [&](DBusMessageIter* at) { decoded.entries.push_back(EntryAt(at)); });
    } else if (first && signature == "a(ss)") {
        ForEachElement(argument, [&](DBusMessageIter* at) { decoded.pairs.push_back(PairAt(at)); });
    }
}

void DecodeBody(DBusMessage* message, WireMessage& decoded)
{
    DBusMessageIter argument;
    bool first = true;
    if (dbus_message_iter_init(message, &argument) == 0) {
        return;
    }
    do {
        DecodeArgument(&argument, first, decoded);
        first = false;
    } while (dbus_message_iter_next(&argument) != 0);
}

WireKind KindOf(DBusMessage* message)
{
    switch (dbus_message_get_type(message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        return WireKind::Call;
    case DBUS_MESSAGE_TYPE_METHOD_RETURN:
        return WireKind::Reply;
    case DBUS_MESSAGE_TYPE_ERROR:
        return WireKind::Error;
    case DBUS_MESSAGE_TYPE_SIGNAL:
        return WireKind::Signal;
    default:
        return WireKind::Invalid;
    }
}

} // namespace

WireMessage DecodeMessage(DBusMessage* message)
{
    WireMessage decoded;
    decoded.kind = KindOf(message);
    decoded.sender = TextOrEmpty(dbus_message_get_sender(message));
    decoded.destination = TextOrEmpty(dbus_message_get_destination(message));
    decoded.path = TextOrEmpty(dbus_message_get_path(message));
    decoded.interface = TextOrEmpty(dbus_message_get_interface(message));
    decoded.member = TextOrEmpty(dbus_message_get_member(message));
    decoded.errorName = TextOrEmpty(dbus_message_get_error_name(message));
    decoded.signature = TextOrEmpty(dbus_message_get_signature(message));
    decoded.noReply = dbus_message_get_no_reply(message) != 0;
    decoded.noAutoStart = dbus_message_get_auto_start(message) == 0;
    decoded.serial = dbus_message_get_serial(message);
    decoded.replySerial = dbus_message_get_reply_serial(message);
    DecodeBody(message, decoded);
    return decoded;
}

} // namespace zviptv::test
