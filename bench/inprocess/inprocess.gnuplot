# SPDX-License-Identifier: MIT
# Both axes are logarithmic: linear growth is a straight line that rises by one decade per decade.
set terminal svg size 900,560 background "white" font "sans,13"
set logscale xy
set key outside right top
set linetype 5 lc rgb "#8c510a"
set grid
set format x "%.0s%c"
set format y "10^{%L}"
set ylabel "CPU time of a message, ns"
titles = "memcpy 'memcpy into the heap’s memory' encode decode 'helper bus: encode' 'helper bus: decode' 'GIO: write' 'GIO: read'"

set output folder."/inprocess-bytes.svg"
set title "One entry"
set xlabel "bytes of its value"
plot for [i=1:8] folder."/inprocess-bytes.dat" using 1:(column(i+1)) with linespoints pt 7 ps 0.5 \
    title word(titles, i)

set output folder."/inprocess-entries.svg"
set title "Values of 16 bytes"
set xlabel "entries"
plot for [i=1:8] folder."/inprocess-entries.dat" using 1:(column(i+1)) with linespoints pt 7 ps 0.5 \
    title word(titles, i)
