# Ratio to the floor by job, with the ratio that each job may reach. Variables: data, picture.
set terminal svg size 1000,800 font "sans-serif,12" background "white"
set output picture
set title "tkosqllite compared with plain C (1 is equal, less is better)"
set style fill solid 0.7
set yrange [] reverse
set xrange [0:*]
set grid xtics
set key outside top center horizontal
set offsets 0,0,0.5,0.5
plot data using ($2 / 2):0:($2 / 2):(0.35):ytic(1) with boxxyerror lc rgb "#4477aa" title "ratio", \
     data using 3:0:(0):(0.42) with xyerrorbars pt -1 lw 3 lc rgb "#cc3311" title "at most"
