# The data, the fit and its band in nlinlsq.dat as nlinlsq.png. See examples/nlinlsq.orv.
set terminal pngcairo size 1000,520
set output "nlinlsq.png"
set grid
set xlabel "t"
set ylabel "y"
set title "A decaying oscillation fitted by nlinlsq"
plot "nlinlsq.dat" index 1 using 1:3:4 with filledcurves fillcolor rgb "#c9dcee" title "two standard errors", \
  "" index 1 using 1:5 with lines dashtype 2 linecolor rgb "#888888" title "what made the data", \
  "" index 1 using 1:2 with lines linewidth 2 linecolor rgb "#1f5f99" title "fit", \
  "" index 0 with points pointtype 7 pointsize 0.7 linecolor rgb "#c0392b" title "data"
