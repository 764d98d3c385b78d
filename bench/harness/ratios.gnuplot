# The time of the service divided by that of the rival: gnuplot -c ratios.gnuplot DATA SVG
data = ARG1
stats data index 0 using 1 name "bars" nooutput
stats data index 0 using 5 name "high" nooutput
stats data index 0 using 6 name "limit" nooutput
widest = limit_max > high_max ? limit_max : high_max

set terminal svg size 800,430 fixed background "white" font "sans-serif,14"
set output ARG2
set datafile separator tab
set encoding utf8

set title "Time of a call, service over rival: shorter is better" font ",16"
set xrange [0:widest * 1.04]
set yrange [bars_min - 0.7:-0.3]
set xtics 0.5 nomirror textcolor "#333333"
set format x "%.1f"
set ytics scale 0 textcolor "#333333"
set border 1 linecolor "#888888"
set grid xtics linecolor "#dddddd" linetype 1
set key below center horizontal samplen 1 width 2 textcolor "#333333"
set style fill solid noborder
set arrow 1 from 1, graph 0 to 1, graph 1 nohead linecolor "#222222" linewidth 1.5 front

half = 0.34
plot data index 0 using (0.5 * $3):1:(0.5 * $3):(half):ytic(2) with boxxyerror \
         linecolor "#6cb1dc" title "service", \
     data index 0 using 3:1:4:5 with xerrorbars pointtype 0 linecolor "#222222" notitle, \
     data index 0 using 6:($1 - 1.3 * half):(0):(2.6 * half) with vectors nohead \
         linecolor "#d55e00" linewidth 3 notitle, \
     NaN with lines linecolor "#d55e00" linewidth 3 title "limit", \
     NaN with lines linecolor "#222222" linewidth 1.5 title "rival", \
     data index 0 using (0.02 * widest):1:(sprintf("%.2f", $3)) with labels left \
         textcolor "#111111" notitle, \
     data index 1 using (NaN):1:ytic("{/:Bold " . strcol(2) . "}") with points notitle
