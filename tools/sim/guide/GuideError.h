#pragma once

#include <stdexcept>

namespace zviptv::sim {

/// A guide cannot be read; what() is one line for the user: file, line, column where there are any, and why.
class GuideError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace zviptv::sim
