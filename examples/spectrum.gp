# gnuplot examples/spectrum.gp: draws spectrum.dat into docs/images/spectrum.png
set terminal pngcairo size 900,360
set output "docs/images/spectrum.png"
set xlabel "frequency"
set ylabel "power"
set logscale y
set format y "10^{%L}"
unset key
plot "spectrum.dat" with impulses lc rgb "#2060a0"
