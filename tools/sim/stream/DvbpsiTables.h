#pragma once

#include "stream/DvbpsiFeed.h"
#include "stream/Programme.h"

struct dvbpsi_s;
struct dvbpsi_pat_s;
struct dvbpsi_pmt_s;
struct dvbpsi_sdt_s;

namespace zviptv::sim {

struct DvbpsiTableDeleter
{
    void operator()(dvbpsi_pat_s* table) const noexcept;
    void operator()(dvbpsi_pmt_s* table) const noexcept;
    void operator()(dvbpsi_sdt_s* table) const noexcept;
};

/// Where a programme's PMT is.
struct PatEntry
{
    std::uint16_t programme = 0;
    std::uint16_t pid = 0;
};

struct ServiceName
{
    std::string name;
    std::string provider;
};

class PatDecoder
{
public:
    PatDecoder();
    PatDecoder(PatDecoder const&) = delete;
    PatDecoder& operator=(PatDecoder const&) = delete;

    /// The whole table when this section completes a new one.
    std::optional<std::vector<PatEntry>> Push(ByteView section);

private:
    static void OnTable(void* self, dvbpsi_pat_s* table);

    std::unique_ptr<dvbpsi_pat_s, DvbpsiTableDeleter> m_fresh;
    DvbpsiFeed m_feed;
};

class PmtDecoder
{
public:
    explicit PmtDecoder(std::uint16_t programme);
    PmtDecoder(PmtDecoder const&) = delete;
    PmtDecoder& operator=(PmtDecoder const&) = delete;

    /// The programme, without names and PMT PID, when this section brings a new definition.
    std::optional<Programme> Push(ByteView section);

private:
    static void OnTable(void* self, dvbpsi_pmt_s* table);

    std::unique_ptr<dvbpsi_pmt_s, DvbpsiTableDeleter> m_fresh;
    DvbpsiFeed m_feed;
};

class SdtDecoder
{
public:
    SdtDecoder();
    SdtDecoder(SdtDecoder const&) = delete;
    SdtDecoder& operator=(SdtDecoder const&) = delete;

    /// Names by service id when this section completes a new table of the actual transport stream.
    std::optional<std::map<std::uint16_t, ServiceName>> Push(ByteView section);

private:
    static void OnSubtable(dvbpsi_s* handle, std::uint8_t tableId, std::uint16_t extension, void* self);
    static void OnTable(void* self, dvbpsi_sdt_s* table);

    std::unique_ptr<dvbpsi_sdt_s, DvbpsiTableDeleter> m_fresh;
    DvbpsiFeed m_feed;
};

} // namespace zviptv::sim
