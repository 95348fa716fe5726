#!/usr/bin/env bash
# Builds the library, installs it into build/stage, builds the examples against that copy and runs them:
#   ./demo.sh [FILE.wav] [PHOTO]
# FILE.wav is a WAV file, PHOTO is a PNG or JPEG file; in place of either a recorded voice and a photograph that come
# with Debian are used. Results are in build/demo.
set -euo pipefail
sound=/usr/share/sounds/alsa/Front_Center.wav
photo=/usr/share/matplotlib/mpl-data/sample_data/grace_hopper.jpg
if [ $# -gt 2 ]; then
    echo "usage: ./demo.sh [FILE.wav] [PHOTO]" >&2
    exit 2
fi
for file; do
    case $file in
        *.[pP][nN][gG] | *.[jJ][pP][gG] | *.[jJ][pP][eE][gG]) photo=$(realpath -m -- "$file") ;;
        *) sound=$(realpath -m -- "$file") ;;
    esac
done
cd "$(dirname "$0")"
root=$PWD

scripts/packages.sh build demo
echo "Building the library (build/release)"
mkdir -p build/demo
log=build/demo/build.log
if ! { cmake --preset release -DQVR_TESTS=OFF && cmake --build --preset release -j "$(nproc)"; } >"$log" 2>&1; then
    tail -30 "$log" >&2
    exit 1
fi
echo "Installing it into build/stage and building the examples against that copy (build/examples)"
scripts/build_examples.sh build/release "$root/build/stage" build/examples

echo
echo "effects: gain, soft clipping, echo, normalisation; back to 16 bits with each of three roundings"
build/examples/effects --out build/demo/effects "$sound"

echo
echo "spectrogram: window, real FFT, decibels"
build/examples/spectrogram --fft 1024 --overlap 90 --out build/demo/spectrogram.png "$sound"

# The same program found through pkg-config does the same.
mkdir -p build/demo/pkgconfig
build/examples/pkgconfig/effects --out build/demo/pkgconfig/effects "$sound" >/dev/null
for rounding in truncate even away; do
    cmp "build/demo/effects-$rounding.wav" "build/demo/pkgconfig/effects-$rounding.wav"
done
rm -r build/demo/pkgconfig
echo
echo "statistics: levels, peak, zero crossings and silences; the envelope as a picture"
build/examples/statistics --out build/demo/statistics.png "$sound"

echo
echo "scale: a photograph halved with low-pass weights, and a part of it enlarged four times"
build/examples/scale --factor 0.5 --method lanczos --antialias "$photo" build/demo/half.jpg
build/examples/scale --region 60,60,100,100 --factor 4 --method catmull-rom "$photo" build/demo/detail.png

echo
echo "contactsheet: the photograph through every method"
build/examples/contactsheet --out build/demo/contactsheet.png "$photo"

echo
echo "posterise: few levels through a palette, brightness as a ramp of colours"
build/examples/posterise --levels 4 "$photo" build/demo/posterised.png
build/examples/posterise --ramp --levels 12 "$photo" build/demo/ramp.png

echo
echo "filter: a band of speech by designed FIR taps, clicks removed, two thirds of the sample rate; responses and spectra"
build/examples/filter --pass 300,3400 --taps 511 --median 3 --rate 2,3 --picture build/demo/filter.png \
    --out build/demo/filter.wav "$sound"
build/examples/filter --pass 0,1000 --kind chebyshev --order 6 --picture build/demo/filter-chebyshev.png \
    --out build/demo/filter-chebyshev.wav "$sound"

echo
echo "findsound: a piece of the recording looked for in the effects' output, where its echo follows it"
build/examples/findsound --cut 0.1,0.5 --out build/demo/findsound.png "$sound" build/demo/effects-even.wav

echo
echo "denoise: noise added, and taken out again by wavelets"
build/examples/denoise --noise -35 --out build/demo/denoise "$sound"

echo
echo "analytic: envelope and instantaneous frequency of the whole recording, by its Hilbert transform"
build/examples/analytic --out build/demo/analytic.png "$sound"

echo
echo "Sounds are in build/demo; the program built through pkg-config wrote the same bytes as the one built through CMake."
echo "The envelope is build/demo/statistics.png, the filters' responses are filter.png and filter-chebyshev.png beside it; see"
echo "findsound.png, denoise.png and analytic.png too."
echo "Pictures: half.jpg, detail.png, contactsheet.png, posterised.png, ramp.png."
echo "Listen with: aplay build/demo/effects-even.wav"
