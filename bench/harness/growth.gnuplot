# The time of a call by the number of stored keys: gnuplot -c growth.gnuplot DATA SVG
data = ARG1
operations = "get-action get-all-keys press create-key"
servers = "service rival"
array colors[2] = ["#0072b2", "#d55e00"]
array points[2] = [7, 5]
least = 1e9
most = 0
do for [server = 1:2] {
    stats data using server + 1 nooutput
    least = STATS_min < least ? STATS_min : least
    most = STATS_max > most ? STATS_max : most
}

set terminal svg size 800,620 fixed background "white" font "sans-serif,14"
set output ARG2
set datafile separator tab
set encoding utf8

set logscale xy
set xrange [7:14000]
set xtics ("10" 10, "100" 100, "1,000" 1000, "10,000" 10000) nomirror textcolor "#333333"
set ytics ("10 µs" 10, "100 µs" 100, "1 ms" 1e3, "10 ms" 1e4, "100 ms" 1e5, "1 s" 1e6) nomirror textcolor "#333333"
set yrange [least / 1.5:most * 2]
set border 3 linecolor "#888888"
set grid xtics ytics linecolor "#dddddd" linetype 1
set key top left samplen 2 reverse Left textcolor "#333333"

set multiplot layout 2,2 title "Time of a call by the number of stored keys" font ",16" \
    margins 0.09, 0.97, 0.06, 0.87 spacing 0.12, 0.15
do for [panel = 1:4] {
    set title word(operations, panel)
    if (panel > 1) { unset key }
    plot for [server = 1:2] data index panel - 1 using 1:(column(server + 1)) with linespoints \
        linecolor rgb colors[server] linewidth 2 pointtype points[server] pointsize 0.7 \
        title word(servers, server)
}
unset multiplot
