"""From a recording to a plot of temperature over time: bearing.py RUN.krt PLOT.png"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

import ovix

path, picture = sys.argv[1:]
with ovix.open(path) as rec:
    print(rec)
    print("can give", ", ".join(rec.units))
    first = rec[0].measure("temperature")
    hottest = np.unravel_index(np.argmax(first.masked()), first.values.shape)
    y, x = int(hottest[0]), int(hottest[1])
    spot = (max(x - 8, 0), max(y - 8, 0), 16, 16)
    series = rec.series(roi={"hottest spot": spot, "whole frame": (0, 0, rec.info.width, rec.info.height)})

fig, (left, right) = plt.subplots(1, 2, figsize=(11, 4), layout="constrained")
shown = left.imshow(first.masked(), cmap="inferno")
left.add_patch(plt.Rectangle(spot[:2], *spot[2:], fill=False, color="white"))
left.set(title=f"frame 0, {str(first.time)[:19]} UTC", xlabel="x (pixels)", ylabel="y (pixels)")
fig.colorbar(shown, label=f"temperature ({first.unit})")

seconds = (series.time - series.time[0]) / np.timedelta64(1, "s")
for name, figures in series.regions.items():
    (line,) = right.plot(seconds, figures.mean, label=f"{name}, mean and deviation")
    right.fill_between(seconds, figures.mean - figures.std, figures.mean + figures.std, alpha=0.2, color=line.get_color())
emissivity = first.parameters["emissivity"]
right.set(
    title=f"emissivity {emissivity.value} (from the {emissivity.origin})",
    xlabel="time (s)",
    ylabel=f"temperature ({series.unit})",
)
right.legend(loc="center right")
fig.savefig(picture, dpi=110)
print(f"{picture}: {len(series)} frames, {series.mean.min():.2f} to {series.mean.max():.2f} {series.unit}")
