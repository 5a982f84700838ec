// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct XML_ParserStruct;

namespace zviptv::sim {

/// Fills the buffer; returns 0 at the end. @throws GuideError if reading fails
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t size)>;

/// The attributes of one element, while its start is handled.
class XmlAttributes
{
public:
    explicit XmlAttributes(char const* const* pairs) : m_pairs(pairs) {}

    /// The value of an attribute; empty if there is none with this name.
    std::string_view Get(std::string_view name) const;

private:
    char const* const* m_pairs; ///< name, value, name, value … null
};

/// Receives the elements and texts of an XmlParser. Texts are UTF-8 and valid during the call. Exceptions end
/// the parsing.
class XmlHandler
{
public:
    virtual ~XmlHandler() = default;
    virtual void OnStart(std::string_view name, XmlAttributes const& attributes) = 0;
    virtual void OnEnd(std::string_view name) = 0;

    /// A piece of text; a text may consist of several pieces.
    virtual void OnText(std::string_view text) = 0;
};

/// Reads an XML document of any size in pieces. Does not fetch anything that a document refers to, and
/// refuses contents that would need much memory or time: entity declarations, more than
/// MaxAttributeDeclarations, attribute defaults that more than double it, tags and comments over
/// MaxTokenSize, deep nesting.
class XmlParser
{
public:
    static constexpr std::size_t BufferSize = 64 * 1024;
    static constexpr std::size_t MaxTokenSize = 1024 * 1024;
    static constexpr unsigned MaxDepth = 64;
    static constexpr unsigned MaxAttributeDeclarations = 256;

    /// `name` is the name of the document in error messages.
    XmlParser(std::string name, XmlHandler& handler);
    XmlParser(XmlParser const&) = delete;
    XmlParser& operator=(XmlParser const&) = delete;
    ~XmlParser();

    /// Call it only once. @throws GuideError "name:line:column: …"
    void Parse(ReadBytes const& read);

    /// The present position, counting from 1.
    std::uint64_t Line() const;

    /// @throws GuideError with the name and the present position
    [[noreturn]] void Fail(std::string const& text) const;

private:
    friend struct XmlCallbacks;

    struct Deleter
    {
        void operator()(XML_ParserStruct* parser) const noexcept;
    };

    void ParsePiece(ReadBytes const& read, bool& ended);
    void CheckTokenSize() const;
    void CountDefaults(char const* const* attributes);

    /// Runs a callback of expat. Exceptions must not pass through expat: they stop it and are kept in
    /// m_failure.
    template <typename Function>
    void Guard(Function function) noexcept;

    std::string m_name;
    XmlHandler& m_handler;
    std::unique_ptr<XML_ParserStruct, Deleter> m_parser;
    std::exception_ptr m_failure;
    std::uint64_t m_fed = 0; ///< bytes
    unsigned m_depth = 0;
    unsigned m_attributeDeclarations = 0;
    std::uint64_t m_defaulted = 0; ///< bytes of attributes that the DTD adds to tags
};

} // namespace zviptv::sim
