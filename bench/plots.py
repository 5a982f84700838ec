# SPDX-License-Identifier: MIT
"""Draws the pictures of the results with gnuplot."""

import pathlib
import subprocess

from bus.variants import METHODS, PACKETS
from inprocess import encoding

HERE = pathlib.Path(__file__).parent
STYLE = """set terminal svg size 900,{height} background "white" font "sans,13"
set output "{file}"
set border 3
set tics nomirror
set grid ytics lc rgb "#dddddd"
set key above left
set linetype 5 lc rgb "#8c510a"
"""


def data(name, rows):
    """A data block of gnuplot."""
    return f"${name} << EOD\n" + "\n".join(" ".join(map(str, row)) for row in rows) + "\nEOD\n"


def quoted(title):
    return '"' + title + '"'


def gnuplot(file, script, height=420):
    subprocess.run(["gnuplot"], input=STYLE.format(file=file, height=height) + script, text=True, check=True)
    return file


def draw_calls(bus, file):
    """The distribution of all calls, without the slowest thousandth."""
    script = ("set multiplot layout 1,2\nset logscale x\nset xlabel \"µs\"\nset yrange [0:1]\n"
              "set ylabel \"share of the calls\"\nset key below center maxcols 2\n")
    for method, title in METHODS.items():
        part = bus["call"][method]
        lines = []
        for number, (key, one) in enumerate(part.items()):
            script += data(f"{method}{number}", [(ns / 1e3, share) for share, ns in one["distribution"].items()])
            lines.append(f"${method}{number} using 1:2 with lines lw 2 title {quoted(bus['variants'][key])}")
        script += f"set title {quoted(title)}\nplot {', '.join(lines)}\n"
    return gnuplot(file, script + "unset multiplot\n", 540)


def draw_pushes(bus, file):
    """Medians, and where the middle half of the blocks lies."""
    rows = [[quoted(title), *(bus["push"][str(size)][key]["bytes"][value] / 1e6
                              for key in bus["variants"] for value in ("median", "low", "high"))]
            for size, title in PACKETS.items()]
    columns = [f"$push using {2 + 3 * number}:{3 + 3 * number}:{4 + 3 * number}:xtic(1) title {quoted(title)}"
               for number, title in enumerate(bus["variants"].values())]
    return gnuplot(file, data("push", rows) + "set style data histogram\nset style histogram errorbars gap 1 lw 1\n"
                   "set style fill solid 0.8 noborder\nset logscale y\nset ylabel \"MB/s\"\n"
                   f"plot {', '.join(columns)}\n")


def draw_callbacks(bus, file):
    """Medians, and where the middle half of the blocks lies."""
    rows = [(count, *(one[figure][value] / 1e3 for figure in ("wall", "cpu") for value in ("median", "low", "high")))
            for count, one in bus["callbacks"]["callbacks"].items()]
    return gnuplot(file, data("callbacks", rows) + "set logscale x 2\nset yrange [0:*]\nset xlabel \"callbacks\"\n"
                   "set ylabel \"µs per packet of 4 KiB\"\n"
                   "plot $callbacks using 1:2:3:4 with yerrorlines lw 2 title \"from packet to packet\", "
                   "$callbacks using 1:5:6:7 with yerrorlines lw 2 title \"processor time\"\n", 340)


def draw_growth(bus, file):
    rows = [(point["calls"], point["p50"] / 1e3, point["rss_kib"] / 1024) for point in bus["growth"]["line"]]
    return gnuplot(file, data("growth", rows) + "set yrange [0:*]\nset y2range [0:*]\nset y2tics\nset border 11\n"
                   "set format x \"%.0s%c\"\nset xlabel \"calls\"\nset ylabel \"µs\"\nset y2label \"MiB\"\n"
                   "plot $growth using 1:2 with lines lw 2 title \"p50 of a call\", "
                   "$growth using 1:3 axes x1y2 with lines lw 2 title \"resident memory\"\n", 340)


def draw_inprocess(times, folder):
    encoding.write_plots(times, folder)
    subprocess.run(["gnuplot", "-e", f"folder='{folder}'", HERE / "inprocess/inprocess.gnuplot"], check=True)
    return [folder / f"inprocess-{name}.svg" for name in ("bytes", "entries")]


def draw(results, folder):
    """Draws all pictures into the folder. Returns their files."""
    pictures = {"calls": draw_calls, "pushes": draw_pushes, "callbacks": draw_callbacks, "growth": draw_growth}
    return [*(picture(results["bus"], folder / f"{name}.svg") for name, picture in pictures.items()),
            *draw_inprocess(results["inprocess"]["times"], folder)]
