// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv {

/// Asks the system bus whether the helper bus has an owner.
/// The query uses a connection of libdbus that is opened for it and closed after it, so that messages of
/// others do not stay in the process. Without connecting, it takes at most 2,000 ms, even if signals
/// interrupt it. Any thread may call it.
class OwnerQuestion
{
public:
    enum class Answer
    {
        Owned,
        NotOwned,
        Failed ///< no bus, no answer in time, no free descriptor
    };

    /// Sets the calling thread's failure unless it is Owned.
    static Answer Ask();
};

} // namespace zviptv
