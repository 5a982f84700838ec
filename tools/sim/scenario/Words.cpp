// SPDX-License-Identifier: MIT
#include "Words.h"

namespace zviptv::sim {

namespace {

bool IsBlank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r';
}

constexpr char NoText[] = "a NUL byte: the file is not plain text; save it as UTF-8 text";

/// Reads a line byte by byte and counts its characters, which may have several bytes in UTF-8.
class Reader
{
public:
    explicit Reader(std::string const& line) : m_line(line) {}

    bool IsAtEnd() const { return m_next == m_line.size(); }
    char Front() const { return m_line[m_next]; }
    unsigned Column() const { return m_column; }
    std::size_t Offset() const { return m_next; }

    char Take()
    {
        char const letter = m_line[m_next++];
        if (letter == '\0') {
            throw LineError(m_column, NoText);
        }
        bool const isWithin = !IsAtEnd() && (static_cast<unsigned char>(Front()) & 0xC0U) == 0x80;
        m_column += isWithin ? 0 : 1;
        return letter;
    }

private:
    std::string const& m_line;
    std::size_t m_next = 0;
    unsigned m_column = 1;
};

/// The text up to the closing mark; the opening one has been taken.
std::string TakeQuoted(Reader& line, unsigned column)
{
    std::string text;
    while (!line.IsAtEnd()) {
        char letter = line.Take();
        if (letter == '"') {
            return text;
        }
        if (letter == '\\' && !line.IsAtEnd() && (line.Front() == '"' || line.Front() == '\\')) {
            letter = line.Take();
        }
        text += letter;
    }
    throw LineError(column, "a quotation mark is not closed: use \"TEXT\"");
}

Word TakeWord(Reader& line)
{
    Word word;
    word.column = line.Column();
    while (!line.IsAtEnd() && !IsBlank(line.Front())) {
        unsigned const column = line.Column();
        char const letter = line.Take();
        if (letter == '"') {
            word.text += TakeQuoted(line, column);
        } else {
            word.text += letter;
        }
    }
    word.end = line.Column();
    return word;
}

} // namespace

Line SplitLine(std::string const& text)
{
    Line line;
    std::size_t begin = 0;
    std::size_t end = 0;
    Reader reader(text);
    while (!reader.IsAtEnd() && reader.Front() != '#') {
        if (IsBlank(reader.Front())) {
            reader.Take();
        } else {
            begin = line.words.empty() ? reader.Offset() : begin;
            line.words.push_back(TakeWord(reader));
            end = reader.Offset();
        }
    }
    while (!reader.IsAtEnd()) {
        reader.Take(); // a comment is checked, too
    }
    line.text = text.substr(begin, end - begin);
    return line;
}

} // namespace zviptv::sim
