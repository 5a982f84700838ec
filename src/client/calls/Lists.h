// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Pending.h>
#include <zviptv/client/Result.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::client {

/// The longest list that is read.
constexpr std::int32_t MaxElements = 65536;

inline bool IsSize(std::int32_t size)
{
    return size >= 0 && size <= MaxElements;
}

/// The failure of a list with an impossible size.
inline Failure WrongSize(char const* function, std::int32_t size)
{
    return {FailureKind::MalformedReply, function, "size", "",
            "size is malformed: expected a number of elements, got " + std::to_string(size)};
}

/// Asks for the size of a list, then for each element. `part` returns the element within an answer.
template <class Element, class Count, class Describe, class Part>
Result<std::vector<Element>> AskAll(char const* function, Count const& count, Describe const& describe,
                                    Part const& part)
{
    Result<std::int32_t> const size = count();
    if (!size) {
        return size.GetFailure();
    }
    if (!IsSize(*size)) {
        return WrongSize(function, *size);
    }
    std::vector<Element> elements;
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(*size); ++i) {
        auto answer = describe(i);
        if (!answer) {
            return answer.GetFailure();
        }
        elements.push_back(std::move(part(*answer)));
    }
    return elements;
}

/// The same without waiting: successive requests, each within the remaining time.
template <class Element, class Answer>
class ListCall : public std::enable_shared_from_this<ListCall<Element, Answer>>
{
public:
    using Describe = std::function<Pending(std::uint32_t, Completion<Answer>, CallOptions)>;
    using Part = std::function<Element&(Answer&)>;

    ListCall(char const* function, Completion<std::vector<Element>> done, CallOptions options,
             Describe describe, Part part)
        : m_function(function), m_done(std::move(done)), m_describe(std::move(describe)),
          m_part(std::move(part)),
          m_deadline(std::chrono::steady_clock::now() +
                     std::clamp(options.timeout, std::chrono::milliseconds(0),
                                std::chrono::milliseconds(std::numeric_limits<int>::max())))
    {
    }

    void OnCounted(Result<std::int32_t> const& size)
    {
        if (!size || !IsSize(*size)) {
            Finish(size ? WrongSize(m_function, *size) : size.GetFailure());
            return;
        }
        m_size = static_cast<std::uint32_t>(*size);
        Next();
    }

    /// The outstanding request.
    Pending current;

private:
    void Next()
    {
        if (m_elements.size() == m_size) {
            Finish(std::move(m_elements));
            return;
        }
        auto const self = this->shared_from_this();
        CallOptions const left{
            std::chrono::ceil<std::chrono::milliseconds>(m_deadline - std::chrono::steady_clock::now())};
        current = m_describe(
            static_cast<std::uint32_t>(m_elements.size()),
            [self](Result<Answer> answer) {
                if (!answer) {
                    self->Finish(answer.GetFailure());
                    return;
                }
                self->m_elements.push_back(std::move(self->m_part(*answer)));
                self->Next();
            },
            left);
    }

    void Finish(Result<std::vector<Element>> result)
    {
        if (auto const done = std::exchange(m_done, nullptr)) { // the handle of the call keeps this object
            done(std::move(result));
        }
    }

    char const* m_function;
    Completion<std::vector<Element>> m_done;
    Describe m_describe;
    Part m_part;
    std::chrono::steady_clock::time_point m_deadline;
    std::uint32_t m_size = 0;
    std::vector<Element> m_elements;
};

template <class Element, class Answer, class Count>
Pending AskAll(char const* function, Completion<std::vector<Element>> done, CallOptions options,
               Count const& count, typename ListCall<Element, Answer>::Describe describe,
               typename ListCall<Element, Answer>::Part part)
{
    auto const call = std::make_shared<ListCall<Element, Answer>>(function, std::move(done), options,
                                                                  std::move(describe), std::move(part));
    call->current = count([call](Result<std::int32_t> const& size) { call->OnCounted(size); }, options);
    return Pending([call] { call->current.Cancel(); });
}

} // namespace zviptv::client
