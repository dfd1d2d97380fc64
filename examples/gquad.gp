# The rules of gquad.dat as gquad.png. See examples/gquad.orv.
set terminal pngcairo size 900,420
set output "gquad.png"
set xrange [-1.05:1.05]
set yrange [0:*]
set xlabel "points"
set ylabel "weights"
set grid
set key top right
plot "gquad.dat" index 0 with linespoints pointtype 7 linecolor rgb "#1f5f99" title "1", \
  "" index 1 with linespoints pointtype 5 linecolor rgb "#a03020" title "1/sqrt(1 - x^2)", \
  "" index 2 with linespoints pointtype 9 linecolor rgb "#308040" title "(1 - x)^2", \
  "" index 3 with linespoints pointtype 6 linecolor rgb "#806020" title "1, both ends fixed"
