// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include "guide/GuideProblems.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <glib.h>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace zviptv::test {

sim::LoadedGuide ReadText(std::string const& xml, sim::ServiceNames const& names, std::size_t step)
{
    std::size_t at = 0;
    auto const read = [&](char* buffer, std::size_t size) {
        std::size_t const count = std::min({size, step, xml.size() - at});
        std::copy_n(xml.data() + at, count, buffer);
        at += count;
        return count;
    };
    return sim::ReadGuide("test.xml", read, names);
}

std::string ErrorOf(std::string const& xml, std::size_t step)
{
    try {
        ReadText(xml, {}, step);
    } catch (sim::GuideError const& error) {
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return {};
}

std::string Tv(std::string const& elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n" + elements + "\n</tv>\n";
}

std::string Programme(std::string const& channel, std::string const& start, std::string const& stop,
                      std::string const& inner)
{
    std::string const end = stop.empty() ? "" : " stop=\"" + stop + "\"";
    return "<programme channel=\"" + channel + "\" start=\"" + start + "\"" + end + ">" + inner +
           "</programme>\n";
}

Json::Value ParseJson(std::string const& text)
{
    Json::CharReaderBuilder rules;
    Json::CharReaderBuilder::strictMode(&rules.settings_);
    std::unique_ptr<Json::CharReader> const reader(rules.newCharReader());
    Json::Value value;
    std::string errors;
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors << text;
    return value;
}

bool IsUtf8(std::string const& text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

TempFile::TempFile(std::string const& content)
{
    char const* const folder = std::getenv("TMPDIR");
    m_path = std::string(folder ? folder : "/tmp") + "/zviptv-guide-XXXXXX";
    int const file = mkstemp(m_path.data());
    if (file < 0) {
        throw std::runtime_error("no temporary file");
    }
    close(file);
    std::ofstream(m_path, std::ios::binary) << content;
}

TempFile::~TempFile()
{
    std::remove(m_path.c_str());
}

std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

} // namespace zviptv::test
