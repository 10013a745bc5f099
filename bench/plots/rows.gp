# Nanoseconds per row by number of rows, one plot for each job. Variables: data, picture, names. The columns of the data
# are the number of rows and, job by job, the contenders of these names.
set terminal svg size 1000,800 font "sans-serif,12" background "white"
set output picture
jobs = "'write memory' 'write file' read walk"
contenders = words(names)
set logscale xy
set xtics (1000, 10000, 100000)
set xrange [800:125000]
set xlabel "rows"
set ylabel "nanoseconds per row"
set grid
set key outside top center horizontal samplen 1
set multiplot layout 2,2
do for [job = 1:words(jobs)] {
    set title word(jobs, job) offset 0,-0.5
    plot for [i = 1:contenders] data using 1:(column(1 + (job - 1) * contenders + i)) \
        with linespoints pt 7 lw (i == 1 ? 3 : 1.5) title word(names, i)
}
unset multiplot
