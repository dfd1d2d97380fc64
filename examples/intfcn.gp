# The errors of intfcn.dat against the calls, as intfcn.png. See examples/intfcn.orv.
set terminal pngcairo size 720,520
set output "intfcn.png"
set logscale y
set format y "10^{%L}"
set xlabel "calls of f"
set ylabel "true error"
set title "log(x) sqrt(x) from 0 to 1"
set grid
set key top right
plot "intfcn.dat" index 0 with linespoints pointtype 7 linecolor rgb "#1f5f99" title "bisection", \
     "" index 1 with linespoints pointtype 5 linecolor rgb "#a03020" title "with extrapolation", \
     "" index 2 with points pointtype 9 pointsize 1.5 linecolor rgb "#2f7f2f" title "as a weight"
