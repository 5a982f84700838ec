# SPDX-License-Identifier: MIT
# Memory and descriptors of the applications over time, with the restarts of the service.
set terminal svg size 900,520 background "white" font "sans,12"
set output picture
set datafile separator ","
set key above left
set xlabel "seconds"
set multiplot layout 2,1
set ylabel "MiB"
set yrange [0:*]
plot samples using "seconds":(column("rss_mean_kib")/1024) with lines lw 2 title "resident memory, mean of the applications", \
     samples using "seconds":(column("rss_max_kib")/1024) with lines title "largest application"
set ylabel "number"
plot samples using "seconds":"fds_mean" with lines lw 2 title "descriptors, mean of the applications", \
     samples using "seconds":"restarts" with steps title "restarts of the service so far"
unset multiplot
