# SPDX-License-Identifier: MIT
# What the guard and the benchmarks within a process have in common: the workloads, and the library's objects with
# another partner, which answers within the process.
set(cost_sources
    "${CMAKE_CURRENT_LIST_DIR}/Allocations.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/LocalChannel.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/Messages.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/Workloads.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../support/OfflineChannel.cpp"
    "$<FILTER:$<TARGET_OBJECTS:zviptv_objects>,EXCLUDE,dbus/(ProxyDBusHelper\\.cpp|ConnectionHelperDBusClient)>")
