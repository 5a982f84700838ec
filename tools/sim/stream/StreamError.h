#pragma once

#include <stdexcept>

namespace zviptv::sim {

/// A stream cannot be opened, read or played; what() is one line for the user, file name included.
class StreamError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace zviptv::sim
