# The tables of functions.dat as functions.png. See examples/functions.orv.
set terminal pngcairo size 1300,460
set output "functions.png"
set multiplot layout 1,3
set grid
set title "gamma(x)"
unset key
set yrange [-10:10]
plot "functions.dat" index 0 with lines linecolor rgb "#1f5f99"
set title "erf(x)"
set yrange [-1.1:1.1]
plot "functions.dat" index 1 using 1:2 with lines linecolor rgb "#1f5f99"
set title "I_x(a, b)"
set key top left
set yrange [0:1]
plot "functions.dat" index 2 using 1:2 with lines title "a = b = 1/2", "" index 2 using 1:3 with lines title "a = 2, b = 5", \
  "" index 2 using 1:4 with lines title "a = b = 30"
unset multiplot
