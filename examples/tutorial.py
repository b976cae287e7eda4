#!/usr/bin/python3
# %% [markdown]
# # From raw echoes to a calm image
#
# A radar flies past some fields, a lake and three corner reflectors. From its raw echoes we compute
# the image, detect it, average looks, and see what that does to speckle. Run it as a script,
#
#     tutorial.py FOLDER
#
# which writes the pictures into FOLDER, or cell by cell in an editor that knows `# %%`. NumPy makes
# the echoes, as nature would; all that follows is computed by sarnum where sarnum has it.

# %%
import pathlib
import sys

import matplotlib
import numpy

matplotlib.use("Agg")  # pictures go to files
import matplotlib.pyplot as plt
import sarnum

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "tutorial_pictures")
folder.mkdir(parents=True, exist_ok=True)
decibel_range = dict(origin="upper", cmap="gray", aspect="auto", interpolation="nearest")


def picture(name, title, power, lowest, highest, axes=("slant range, samples", "azimuth, lines")):
    figure, plot = plt.subplots(figsize=(7, 4.5), layout="constrained")
    shown = plot.imshow(10 * numpy.log10(power + 1e-12), vmin=lowest, vmax=highest, **decibel_range)
    figure.colorbar(shown, label="dB")
    plot.set(title=title, xlabel=axes[0], ylabel=axes[1])
    figure.savefig(folder / name, dpi=100)
    plt.close(figure)


# %% [markdown]
# ## The radar
#
# An X-band radar on an aircraft. Each pulse sweeps 80 MHz in 4 us; echoes are sampled at 100 MHz, so
# a sample of slant range is 1.5 m. A reflector stays in the beam for 150 m of the flight, 188 pulses,
# over which its distance changes by 0.28 m: a fifth of a sample, so that range migration need not be
# corrected. It costs a peak 1 percent of its height.

# %%
light = 299792458.0  # m/s
wavelength = light / 9.63e9
bandwidth, sampling_rate, pulse_duration = 80e6, 100e6, 4e-6
range_spacing = light / 2 / sampling_rate
first_range = 10e3  # m, of the first sample of a line
line_spacing = 0.8  # m of flight between two pulses
beam_lines = 188  # for which a point of the ground is seen

lines, samples = 1024, 2048  # of raw echo
height, width = 800, 1200  # of the image: points whose echoes are in there as a whole

along_beam = (numpy.arange(beam_lines) - beam_lines / 2) * line_spacing


def pulse(time):
    """A linear sweep from -bandwidth/2 to +bandwidth/2, 0 before and after."""
    from_middle = time - pulse_duration / 2
    phase = numpy.pi * bandwidth / pulse_duration * from_middle**2
    return numpy.where(abs(from_middle) <= pulse_duration / 2, numpy.exp(1j * phase), 0)


def passage(distance):
    """Phases of the echoes of a point as it passes through the beam; 0 at closest approach."""
    return numpy.exp(-4j * numpy.pi / wavelength * (numpy.hypot(distance, along_beam) - distance))


replica = pulse(numpy.arange(int(pulse_duration * sampling_rate) + 1) / sampling_rate)
distances = first_range + range_spacing * numpy.arange(width)

# %% [markdown]
# ## The ground
#
# Each cell of the ground holds many scatterers, whose echoes add up to a complex Gaussian number.
# The left half is one field, the right half has another, a brighter one and a lake. The reflectors
# are (line, sample, amplitude).

# %%
reflectors = [(150, 803, 120.0), (420, 1010, 80.0), (650, 761, 100.0)]
brightness = numpy.ones((height, width))
brightness[:, 600:] = 0.4
brightness[300:550, 850:1150] = 2.0
brightness[550:, 950:] = 0.01
random = numpy.random.default_rng(1)
ground = numpy.sqrt(brightness / 2) * (random.standard_normal((height, width)) +
                                       1j * random.standard_normal((height, width)))

# %% [markdown]
# ## Raw echoes
#
# Every cell spreads over 188 lines and 400 samples: two convolutions. The reflectors are added by
# their exact geometry, range migration included, which tests whether it may be neglected.

# %%
spread = numpy.fft.fft(ground, lines, axis=0)
for x in range(width):
    spread[:, x] *= numpy.fft.fft(passage(distances[x]), lines)
spread = numpy.fft.fft(numpy.fft.ifft(spread, axis=0), samples, axis=1)
raw = numpy.fft.ifft(spread * numpy.fft.fft(replica, samples), axis=1)
for line, sample, amplitude in reflectors:
    for k, track in enumerate(along_beam):
        distance = numpy.hypot(distances[sample], track)
        delay = 2 * (distance - first_range) / light
        raw[line + k] += (amplitude * numpy.exp(-4j * numpy.pi * distance / wavelength) *
                          pulse(numpy.arange(samples) / sampling_rate - delay))
raw = raw.astype(numpy.complex64)


def power(values):
    """Intensity |z|^2, in double precision: as `sarnum detect` does it."""
    re, im = sarnum.numeric.parts(values)
    return re * re + im * im


picture("1_raw.png", "Raw echoes", power(raw), 0, 60)

# %% [markdown]
# ## Compression
#
# A matched filter gathers each spread echo into a point: the spectrum of a line times the conjugate
# spectrum of the replica. `synthesize` multiplies the *conjugate of the line's* spectrum by the
# reference instead, so what it leaves is the conjugate of what we want, in reversed order, and N
# times as large.

# %%
transforms = sarnum.fft.CFFTClass()


def compress(echoes, reference):
    """Lines (along the last axis) by a matched filter that gives an echo's amplitude to its peak."""
    count = echoes.shape[-1]
    reference_re, reference_im = numpy.zeros((2, count), numpy.float32)
    reference_re[:len(reference)] = reference.real / len(reference)
    reference_im[:len(reference)] = reference.imag / len(reference)
    transforms.forward(reference_re, reference_im)
    re, im = echoes.real.copy(), echoes.imag.copy()
    transforms.synthesize(reference_re, reference_im, re, im)
    return numpy.roll((re - 1j * im)[..., ::-1], 1, axis=-1) / numpy.float32(count)


range_compressed = compress(raw, replica)[:, :width]
picture("2_range_compressed.png", "Compressed in range", power(range_compressed), 0, 60)

# %% [markdown]
# Along the flight the phase of a point is a chirp too, which depends on its distance: each column
# has a replica of its own.

# %%
columns = range_compressed.T.copy()
image = numpy.stack([compress(columns[x], passage(distances[x])) for x in range(width)])
image = image.T[:height].copy()
picture("3_image.png", "Compressed in azimuth", power(image), -20, 20)

# %% [markdown]
# A reflector's peak has its place, its amplitude, and as phase -4 pi R / wavelength, from which its
# distance R is known to a fraction of the wavelength.

# %%
peaks = []
for line, sample, amplitude in reflectors:
    around = image[line - 20:line + 21, sample - 20:sample + 21]
    row, column = divmod(sarnum.numeric.max_index(power(around).ravel()), 41)
    peak = around[row, column]
    peaks.append((line + row - 20, sample + column - 20, abs(peak), numpy.angle(peak)))
    expected = numpy.angle(numpy.exp(-4j * numpy.pi * distances[sample] / wavelength))
    print("reflector at line {}, sample {}: amplitude {:.2f}, phase {:+.2f}".format(*peaks[-1]),
          f"(put there: {line}, {sample}: {amplitude:.2f}, {expected:+.2f})")

# %% [markdown]
# ## Looks
#
# The intensity of a single look scatters as much as its mean: speckle. Averages of 4 x 4 pixels are
# calmer.

# %%
intensity = power(image).astype(numpy.float32)
looks = sarnum.imaging.multilook(intensity, 4, 4)
picture("4_looks.png", "4 x 4 looks", looks, -20, 20, ("slant range, 4 samples", "azimuth, 4 lines"))

# %% [markdown]
# How much calmer? The equivalent number of looks of a homogeneous field is its mean squared over its
# variance: 1 for a single look, and 16 if the 16 pixels were independent. They are not: the image is
# sampled 1.25 times as densely as its bandwidth needs, both ways, which its spectrum shows.


# %%
def equivalent_looks(field):
    values = field.ravel().astype(float)
    mean = sarnum.numeric.mean(values)
    return mean**2 / sarnum.numeric.mean((values - mean)**2)


spectrum = sarnum.fft.forward_2d(image, centred=True)
picture("5_spectrum.png", "Spectrum of the image: bandwidth is 0.8 of the sampling rate",
        sarnum.imaging.multilook(power(spectrum * 1e3).astype(numpy.float32), 4, 4), -25, 15,
        ("range frequency", "azimuth frequency"))

# %% [markdown]
# The image of a white ground has the spectrum of a point, |S|^2 for a replica of spectrum S. So pixels
# k samples apart are correlated by r(k), the inverse transform of |S|^4, and their intensities by
# |r(k)|^2. The variance of the mean of n pixels in a row is that of one pixel, times the mean of
# |r(i - j)|^2 over all i and j.


# %%
def looks_in_a_row(reference, count=4):
    re, im = numpy.zeros((2, 4096))
    re[:len(reference)], im[:len(reference)] = reference.real, reference.imag
    sarnum.fft.forward(re, im)
    re, im = (re * re + im * im)**2, numpy.zeros(4096)
    sarnum.fft.inverse(re, im)
    steps = numpy.arange(count)
    return 1 / numpy.mean((re / re[0])[abs(steps[:, None] - steps)]**2)


predicted = looks_in_a_row(replica) * looks_in_a_row(passage(distances[300]))
before = equivalent_looks(intensity[:, 20:580])
after = equivalent_looks(looks[:, 5:145])
print(f"equivalent looks: {before:.2f} before (theory: 1), {after:.2f} after (theory: {predicted:.2f})")

# %%
figure, plot = plt.subplots(figsize=(7, 4), layout="constrained")
for field, label in ((intensity[:, 20:580], "single look"), (looks[:, 5:145], "4 x 4 looks")):
    plot.hist(field.ravel() / field.mean(), bins=100, range=(0, 4), density=True, alpha=0.6, label=label)
values = numpy.linspace(0, 4, 200)
plot.plot(values, numpy.exp(-values), "k", lw=1, label="theory of a single look: exp(-I)")
plot.set(title="Intensity of one field", xlabel="intensity / mean", ylabel="density")
plot.legend()
figure.savefig(folder / "6_histograms.png", dpi=100)
plt.close(figure)

# %% [markdown]
# The whole way in one picture: raw, compressed in range, compressed in azimuth, and 4 x 4 looks. (The
# first three show the strongest of 4 x 4 pixels, lest reflectors vanish between them.)

# %%
figure, plots = plt.subplots(2, 2, figsize=(6.4, 4.4), layout="constrained")
stages = [(power(raw)[:height, :width], 30, 60), (power(range_compressed)[:height], 10, 45),
          (intensity, -5, 25), (looks, -15, 15)]
for plot, (stage, lowest, highest) in zip(plots.flat, stages):
    strongest = stage if stage is looks else stage.reshape(height // 4, 4, width // 4, 4).max(axis=(1, 3))
    plot.imshow(10 * numpy.log10(strongest + 1e-12), vmin=lowest, vmax=highest, **decibel_range)
    plot.set_axis_off()
figure.savefig(folder / "7_overview.png", dpi=100)
plt.close(figure)
print(f"pictures are in {folder}")
