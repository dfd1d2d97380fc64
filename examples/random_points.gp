# The two sets of random_points.dat side by side, as random_points.png. See examples/random_points.orv.
set terminal pngcairo size 1000,520
set output "random_points.png"
set multiplot layout 1,2
set size square
set xrange [0:1]
set yrange [0:1]
set grid
unset key
set title "500 points of a Faure sequence"
plot "random_points.dat" index 0 with points pointtype 7 pointsize 0.4 linecolor rgb "#1f5f99"
set title "500 random points"
plot "random_points.dat" index 1 with points pointtype 7 pointsize 0.4 linecolor rgb "#a03020"
unset multiplot
