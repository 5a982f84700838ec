// SPDX-License-Identifier: MIT
#include "WireBody.h"

#include "WireCodec.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

namespace zviptv::test {

namespace {

/// An open container. An exception abandons it: closing one that lacks its content is an error.
class Container
{
public:
    Container(DBusMessageIter* parent, int containerType, char const* signature)
        : m_parent(parent), m_exceptions(std::uncaught_exceptions())
    {
        if (dbus_message_iter_open_container(parent, containerType, signature, &m_iter) == 0) {
            throw std::bad_alloc();
        }
    }
    ~Container()
    {
        if (std::uncaught_exceptions() > m_exceptions) {
            dbus_message_iter_abandon_container(m_parent, &m_iter);
        } else {
            dbus_message_iter_close_container(m_parent, &m_iter);
        }
    }
    Container(Container const&) = delete;
    Container& operator=(Container const&) = delete;

    DBusMessageIter* Get() { return &m_iter; }

private:
    DBusMessageIter* m_parent;
    int m_exceptions;
    DBusMessageIter m_iter;
};

void CheckText(std::string const& text)
{
    if (text.find('\0') != std::string::npos) {
        throw std::invalid_argument("text with a zero byte: " + Printable(text));
    }
    if (dbus_validate_utf8(text.c_str(), nullptr) == 0) {
        throw std::invalid_argument("text that is not UTF-8: " + Printable(text));
    }
}

void AppendText(DBusMessageIter* iter, std::string const& text)
{
    char const* data = text.c_str();
    if (dbus_message_iter_append_basic(iter, type::String, &data) == 0) {
        throw std::bad_alloc();
    }
}

void AppendBytes(DBusMessageIter* iter, std::string const& bytes)
{
    Container array(iter, type::Array, "y");
    char const* data = bytes.data();
    if (dbus_message_iter_append_fixed_array(array.Get(), type::Byte, &data,
                                             static_cast<int>(bytes.size())) == 0) {
        throw std::bad_alloc();
    }
}

void AppendVariant(DBusMessageIter* dict, std::string const& key, std::string const& signature,
                   AppendFunction const& append)
{
    Container entry(dict, type::DictEntry, nullptr);
    AppendText(entry.Get(), key);
    Container variant(entry.Get(), type::Variant, signature.c_str());
    append(variant.Get());
}

void CheckEntry(WireEntry const& entry)
{
    constexpr std::size_t libdbusLimit = DBUS_MAXIMUM_ARRAY_LENGTH;
    CheckText(entry.key);
    if (entry.signature != "ay") {
        throw std::invalid_argument("entry " + Printable(entry.key) +
                                    " is not an ay: use WireBody::Variants");
    }
    if (entry.bytes.size() > libdbusLimit) {
        throw std::invalid_argument("entry " + Printable(entry.key) + " exceeds libdbus' limit of 64 MiB");
    }
}

} // namespace

WireVariant BytesVariant(std::string key, std::string bytes)
{
    return {std::move(key), "ay",
            [bytes = std::move(bytes)](DBusMessageIter* iter) { AppendBytes(iter, bytes); }};
}

WireVariant TextVariant(std::string key, std::string text)
{
    CheckText(text);
    return {std::move(key), "s", [text = std::move(text)](DBusMessageIter* iter) { AppendText(iter, text); }};
}

WireVariant NumberVariant(std::string key, std::int32_t number)
{
    return {std::move(key), "i", [number](DBusMessageIter* iter) {
                if (dbus_message_iter_append_basic(iter, type::Int32, &number) == 0) {
                    throw std::bad_alloc();
                }
            }};
}

WireBody::WireBody(WireEntries entries)
{
    for (auto const& entry : entries) {
        CheckEntry(entry);
    }
    m_append = [entries = std::move(entries)](DBusMessageIter* iter) {
        Container dict(iter, type::Array, "{sv}");
        for (auto const& entry : entries) {
            AppendVariant(dict.Get(), entry.key, "ay",
                          [&](DBusMessageIter* content) { AppendBytes(content, entry.bytes); });
        }
    };
}

WireBody::WireBody(WirePairs pairs)
{
    for (auto const& [key, value] : pairs) {
        CheckText(key);
        CheckText(value);
    }
    m_append = [pairs = std::move(pairs)](DBusMessageIter* iter) {
        Container array(iter, type::Array, "(ss)");
        for (auto const& [key, value] : pairs) {
            Container pair(array.Get(), type::Structure, nullptr);
            AppendText(pair.Get(), key);
            AppendText(pair.Get(), value);
        }
    };
}

WireBody WireBody::Strings(std::vector<std::string> texts)
{
    for (auto const& text : texts) {
        CheckText(text);
    }
    return Raw([texts = std::move(texts)](DBusMessageIter* iter) {
        for (auto const& text : texts) {
            AppendText(iter, text);
        }
    });
}

WireBody WireBody::Variants(std::vector<WireVariant> variants)
{
    for (auto const& variant : variants) {
        CheckText(variant.key);
        if (dbus_signature_validate_single(variant.signature.c_str(), nullptr) == 0) {
            throw std::invalid_argument("not a single complete type: " + Printable(variant.signature));
        }
    }
    return Raw([variants = std::move(variants)](DBusMessageIter* iter) {
        Container dict(iter, type::Array, "{sv}");
        for (auto const& variant : variants) {
            AppendVariant(dict.Get(), variant.key, variant.signature, variant.append);
        }
    });
}

WireBody WireBody::Raw(AppendFunction append)
{
    WireBody body;
    body.m_append = std::move(append);
    return body;
}

void WireBody::AppendTo(DBusMessage* message) const
{
    if (!m_append) {
        return;
    }
    DBusMessageIter iter;
    dbus_message_iter_init_append(message, &iter);
    m_append(&iter);
}

} // namespace zviptv::test
