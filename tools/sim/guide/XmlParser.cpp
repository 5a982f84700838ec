// SPDX-License-Identifier: MIT
#include "guide/XmlParser.h"

#include "guide/GuideProblems.h"
#include "stream/CharacterSet.h"

#include <expat.h>

#include <cstring>
#include <new>

namespace zviptv::sim {

std::string_view XmlAttributes::Get(std::string_view name) const
{
    for (char const* const* pair = m_pairs; *pair; pair += 2) {
        if (name == *pair) {
            return *(pair + 1);
        }
    }
    return {};
}

template <typename Function>
void XmlParser::Guard(Function function) noexcept
{
    if (m_failure) {
        return;
    }
    try {
        function();
    } catch (...) {
        m_failure = std::current_exception();
        XML_StopParser(m_parser.get(), XML_FALSE);
    }
}

/// The callbacks of expat.
struct XmlCallbacks
{
    static XmlParser& Self(void* data) { return *static_cast<XmlParser*>(data); }

    static void OnStart(void* data, XML_Char const* name, XML_Char const** attributes)
    {
        XmlParser& self = Self(data);
        self.Guard([&] {
            if (++self.m_depth > XmlParser::MaxDepth) {
                self.Fail("elements are nested too deeply");
            }
            self.CountDefaults(attributes);
            self.m_handler.OnStart(name, XmlAttributes(attributes));
        });
    }

    static void OnEnd(void* data, XML_Char const* name)
    {
        XmlParser& self = Self(data);
        self.Guard([&] {
            --self.m_depth;
            self.m_handler.OnEnd(name);
        });
    }

    static void OnText(void* data, XML_Char const* text, int size)
    {
        XmlParser& self = Self(data);
        self.Guard([&] { self.m_handler.OnText({text, static_cast<std::size_t>(size)}); });
    }

    static void OnEntityDeclaration(void* data, XML_Char const*, int, XML_Char const*, int, XML_Char const*,
                                    XML_Char const*, XML_Char const*, XML_Char const*)
    {
        XmlParser& self = Self(data);
        self.Guard([&] { self.Fail("entity declarations are not allowed"); });
    }

    /// Expat compares each declaration with all earlier ones, and checks all declarations of an element in
    /// each of its tags.
    static void OnAttributeDeclaration(void* data, XML_Char const*, XML_Char const*, XML_Char const*,
                                       XML_Char const*, int)
    {
        XmlParser& self = Self(data);
        self.Guard([&] {
            if (++self.m_attributeDeclarations > XmlParser::MaxAttributeDeclarations) {
                self.Fail("the DTD declares over 256 attributes; remove the declarations");
            }
        });
    }

    /// A reference to an entity that the unread DTD might declare is kept unchanged.
    static void OnSkippedEntity(void* data, XML_Char const* name, int isParameterEntity)
    {
        XmlParser& self = Self(data);
        self.Guard([&] {
            if (isParameterEntity == 0) {
                self.m_handler.OnText("&" + std::string(name) + ";");
            }
        });
    }

    /// Encodings with one byte per character that expat does not know itself.
    static int OnUnknownEncoding(void*, XML_Char const* name, XML_Encoding* info)
    {
        auto const table = ByteCharacters(name);
        if (!table) {
            return XML_STATUS_ERROR;
        }
        for (std::size_t i = 0; i < table->size(); ++i) {
            info->map[i] = (*table)[i];
        }
        info->data = nullptr;
        info->convert = nullptr;
        info->release = nullptr;
        return XML_STATUS_OK;
    }
};

void XmlParser::Deleter::operator()(XML_Parser parser) const noexcept
{
    XML_ParserFree(parser);
}

XmlParser::XmlParser(std::string name, XmlHandler& handler)
    : m_name(std::move(name)), m_handler(handler), m_parser(XML_ParserCreate(nullptr))
{
    if (!m_parser) {
        throw std::bad_alloc();
    }
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), &XmlCallbacks::OnStart, &XmlCallbacks::OnEnd);
    XML_SetCharacterDataHandler(m_parser.get(), &XmlCallbacks::OnText);
    XML_SetEntityDeclHandler(m_parser.get(), &XmlCallbacks::OnEntityDeclaration);
    XML_SetAttlistDeclHandler(m_parser.get(), &XmlCallbacks::OnAttributeDeclaration);
    XML_SetSkippedEntityHandler(m_parser.get(), &XmlCallbacks::OnSkippedEntity);
    XML_SetUnknownEncodingHandler(m_parser.get(), &XmlCallbacks::OnUnknownEncoding, nullptr);
}

XmlParser::~XmlParser() = default;

std::uint64_t XmlParser::Line() const
{
    return XML_GetCurrentLineNumber(m_parser.get());
}

void XmlParser::Fail(std::string const& text) const
{
    auto const column = XML_GetCurrentColumnNumber(m_parser.get()) + 1;
    throw GuideError(m_name + ":" + std::to_string(Line()) + ":" + std::to_string(column) + ": " + text);
}

/// Expat keeps the whole of an unfinished token. Expat 2.6.0 and newer, and Debian's 2.5.0 with the security
/// updates, parse it again only after its size has doubled.
void XmlParser::CheckTokenSize() const
{
    XML_Index const done = XML_GetCurrentByteIndex(m_parser.get());
    std::uint64_t const taken = done < 0 ? 0 : static_cast<std::uint64_t>(done);
    if (m_fed > taken && m_fed - taken > 2 * MaxTokenSize + BufferSize) {
        Fail("a tag, comment or declaration over 1 MiB");
    }
}

/// A short tag may have default attributes of any length.
void XmlParser::CountDefaults(char const* const* attributes)
{
    for (char const* const* text = attributes + XML_GetSpecifiedAttributeCount(m_parser.get()); *text;
         ++text) {
        m_defaulted += std::strlen(*text);
    }
    if (m_defaulted > m_fed + MaxTokenSize) {
        Fail("attribute defaults more than double the document; remove them from the DTD");
    }
}

void XmlParser::ParsePiece(ReadBytes const& read, bool& ended)
{
    void* const buffer = XML_GetBuffer(m_parser.get(), static_cast<int>(BufferSize));
    if (!buffer) {
        throw std::bad_alloc();
    }
    std::size_t const size = read(static_cast<char*>(buffer), BufferSize);
    m_fed += size;
    ended = size == 0;
    auto const status = XML_ParseBuffer(m_parser.get(), static_cast<int>(size), ended ? XML_TRUE : XML_FALSE);
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    if (status != XML_STATUS_OK) {
        Fail(XML_ErrorString(XML_GetErrorCode(m_parser.get())));
    }
    CheckTokenSize();
}

void XmlParser::Parse(ReadBytes const& read)
{
    for (bool ended = false; !ended;) {
        ParsePiece(read, ended);
    }
}

} // namespace zviptv::sim
