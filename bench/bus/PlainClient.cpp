// SPDX-License-Identifier: MIT
#include "PlainClient.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace zviptv::bench {

namespace {

template <typename Number>
Number Parse(std::string_view text)
{
    Number number{};
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
        Fail("not a number: " + std::string(text), "in a message of the service");
    }
    return number;
}

class AnswerReader final : public EntryReader
{
public:
    explicit AnswerReader(std::vector<wire::Rating>& ratings) : m_ratings(ratings) {}

    void Take(std::string_view key, std::string_view value) override
    {
        if (key == "result_internal") {
            m_accepted = Parse<int>(value) != 0;
        } else if (key == "ratingInfoSize") {
            m_count = Parse<std::size_t>(value);
        } else if (key == "ratingInfo") {
            m_records = value;
        }
    }

    void Finish() override
    {
        if (!m_accepted) {
            Fail("the service", "refused");
        }
        m_ratings.resize(m_count);
        std::size_t const size = std::min(m_records.size(), m_count * sizeof(wire::Rating));
        if (size > 0) {
            std::memcpy(m_ratings.data(), m_records.data(), size);
        }
    }

private:
    std::vector<wire::Rating>& m_ratings;
    bool m_accepted = false;
    std::size_t m_count = 0;
    std::string_view m_records;
};

} // namespace

void Fail(std::string const& what, char const* why)
{
    throw std::runtime_error(what + ": " + why);
}

void PesReader::Take(std::string_view key, std::string_view value)
{
    if (key == "functionname") {
        m_isPes = value == "PESCB";
    } else if (key == "pesDataSize") {
        m_announced = Parse<std::size_t>(value);
    } else if (key == "pesType") {
        m_pes.type = Parse<int>(value);
    } else if (key == "pesPID") {
        m_pes.pid = static_cast<std::int16_t>(Parse<int>(value));
    } else if (key == "pesPTS") {
        m_pes.pts = static_cast<std::uint32_t>(Parse<std::uint64_t>(value));
    } else if (key == "pesData") {
        m_pes.data = value.data();
        m_pes.size = value.size();
    }
}

void PesReader::Finish()
{
    if (m_isPes && m_announced == m_pes.size && m_receiver != nullptr) {
        m_receiver(m_pes);
    }
}

void PlainClient::MuteAudio(bool on)
{
    AnswerReader reader(m_ratings);
    Exchange(wire::PlayerPath,
             {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", on ? "1" : "0"}}, reader);
}

unsigned int PlainClient::GetRatingInfo()
{
    AnswerReader reader(m_ratings);
    Exchange(wire::BroadcastPath, {{"functionname", "GetRatingInfo"}, {"handleID", "256"}}, reader);
    return wire::SumOf(m_ratings);
}

void PlainClient::RequestPes(char const* on)
{
    AnswerReader reader(m_ratings);
    Exchange(wire::SubscriberPath, {{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", on}},
             reader);
}

void PlainClient::Subscribe(Receiver receiver)
{
    m_receiver = receiver;
    RequestPes("1");
}

void PlainClient::Unsubscribe()
{
    RequestPes("0");
    m_receiver = nullptr;
}

} // namespace zviptv::bench
