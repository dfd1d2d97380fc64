# The table of distribution_tails.dat as distribution_tails.png. See examples/distribution_tails.orv.
set terminal pngcairo size 900,420
set output "distribution_tails.png"
set logscale y
set yrange [1e-9:2]
set format y "10^{%L}"
set xlabel "x"
set ylabel "probability below x"
set key bottom right
plot "distribution_tails.dat" using 1:2 with lines lw 2 title "t, 1 degree of freedom", \
     "" using 1:3 with lines lw 2 title "t, 3", \
     "" using 1:4 with lines lw 2 title "t, 10", \
     "" using 1:5 with lines lw 2 title "normal"
