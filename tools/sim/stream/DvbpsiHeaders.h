#pragma once

// libdvbpsi's headers need these types and this order, and refuse to be read twice.
// clang-format off
#include <cstdint>
#include <sys/types.h>
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/pat.h>
#include <dvbpsi/pmt.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/sdt.h>
// clang-format on
