// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Request.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <set>
#include <vector>

namespace zviptv::simulated {

/// Time in seconds, as in the verbs.
using Seconds = std::chrono::duration<double>;

/// "0.25 s"
inline std::string Duration(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g s", seconds);
    return text;
}

/// "0.250 s"
inline std::string PointInTime(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", seconds);
    return text;
}

/// What has happened since the reset: requests, what the test did, and what became of the service.
/// Thread-safe.
class Conversation
{
public:
    /// Forgets everything, and starts the clock.
    void Clear()
    {
        std::lock_guard const lock(m_mutex);
        m_entries.clear();
        m_start = Clock::now();
    }

    /// Adds an entry that is not a request. Returns its number.
    std::size_t Note(std::string source, std::string text, std::string answer = "")
    {
        std::lock_guard const lock(m_mutex);
        m_entries.push_back({Now(), std::move(source), std::move(text), std::move(answer), {}, false});
        return m_entries.size() - 1;
    }

    /// Adds the answer to the entry of this number.
    void SetAnswer(std::size_t number, std::string answer)
    {
        std::lock_guard const lock(m_mutex);
        m_entries.at(number).answer = std::move(answer);
    }

    /// Adds a request with the present time.
    void Add(Request request)
    {
        std::lock_guard const lock(m_mutex);
        request.seconds = Now();
        m_entries.push_back(
            {request.seconds, request.application, request.Text(), request.Answer(), request, false});
        m_changed.notify_all();
    }

    /// All requests, in their order.
    std::vector<Request> Requests() const
    {
        std::lock_guard const lock(m_mutex);
        std::vector<Request> requests;
        for (Entry const& entry : m_entries) {
            if (entry.request) {
                requests.push_back(*entry.request);
            }
        }
        return requests;
    }

    /// The first request that fits and has met no expectation yet; waits for one if there is none.
    std::optional<Request> Take(std::string const& function, Arguments const& arguments, Seconds within)
    {
        std::unique_lock lock(m_mutex);
        auto const fits = [&](Entry const& entry) {
            return entry.request && !entry.isUsed && entry.request->Fits(function, arguments);
        };
        auto found = m_entries.end();
        auto const isThere = [&] {
            found = std::find_if(m_entries.begin(), m_entries.end(), fits);
            return found != m_entries.end();
        };
        if (!m_changed.wait_for(lock, std::chrono::duration_cast<std::chrono::microseconds>(within),
                                isThere)) {
            return std::nullopt;
        }
        found->isUsed = true;
        return found->request;
    }

    /// What came instead of a request of this function.
    std::string NearMisses(std::string const& function) const
    {
        std::lock_guard const lock(m_mutex);
        std::string near;
        std::set<std::string> others;
        for (Entry const& entry : m_entries) {
            if (entry.request && entry.request->function == function) {
                near += (near.empty() ? "instead came " : ", ") + entry.text + " after " +
                        PointInTime(entry.seconds) +
                        (entry.isUsed ? " (has met an earlier expectation)" : "");
            } else if (entry.request) {
                others.insert(entry.request->function);
            }
        }
        std::string names;
        for (std::string const& name : others) {
            names += (names.empty() ? "" : ", ") + name;
        }
        return !near.empty() ? near : names.empty() ? "no request came" : "other requests came: " + names;
    }

    /// All entries, as a table.
    std::string Table() const
    {
        std::lock_guard const lock(m_mutex);
        std::vector<Row> rows{{"Time", "From", "What", "Answer"}, {}};
        for (Entry const& entry : m_entries) {
            rows.push_back({PointInTime(entry.seconds), entry.source, entry.text, entry.answer});
        }
        std::array<std::size_t, 4> widths{};
        for (Row const& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths[i] = std::max(widths[i], row[i].size());
            }
        }
        for (std::size_t i = 0; i < widths.size(); ++i) {
            rows[1][i] = std::string(widths[i], '-');
        }
        std::string table;
        for (Row const& row : rows) {
            std::string line;
            for (std::size_t i = 0; i < row.size(); ++i) {
                line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
            }
            table += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
        }
        return table;
    }

private:
    using Clock = std::chrono::steady_clock;
    using Row = std::array<std::string, 4>;

    struct Entry
    {
        double seconds;
        std::string source;
        std::string text;
        std::string answer;
        std::optional<Request> request;
        bool isUsed; ///< has met an expectation
    };

    double Now() const { return Seconds(Clock::now() - m_start).count(); }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Entry> m_entries;
    Clock::time_point m_start = Clock::now();
};

} // namespace zviptv::simulated
