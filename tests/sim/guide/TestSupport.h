// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideFile.h"

#include <json/json.h>
#include <string>

namespace zviptv::test {

/// A guide read from this text, a few bytes at a time, as "test.xml".
sim::LoadedGuide ReadText(std::string const& xml, sim::ServiceNames const& names = {}, std::size_t step = 7);

/// The error that reading this text ends with; fails the test when there is none.
std::string ErrorOf(std::string const& xml, std::size_t step = 4096);

/// A whole document around the given elements, two lines above them.
std::string Tv(std::string const& elements);

/// A programme; no stop when it is empty.
std::string Programme(std::string const& channel, std::string const& start, std::string const& stop,
                      std::string const& inner = "<title>T</title>");

/// Strict JSON; fails the test for anything else.
Json::Value ParseJson(std::string const& text);

bool IsUtf8(std::string const& text);

/// A file in the temporary folder that is removed with the object.
class TempFile
{
public:
    explicit TempFile(std::string const& content = {});
    TempFile(TempFile const&) = delete;
    TempFile& operator=(TempFile const&) = delete;
    ~TempFile();

    std::string const& Path() const { return m_path; }

private:
    std::string m_path;
};

std::string ReadFile(std::string const& path);

} // namespace zviptv::test
