#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds and tests the example subtitle-logger in C++ and Python with the installed files: subtitle_logger.sh BUILD SOURCE
. "$(dirname "$0")/../contract/install.sh"

cp -r "$prefix/share/zv-iptv/examples/subtitle-logger" "$work/example"
cd "$work/example"
export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir CMAKE_PREFIX_PATH=$prefix ZV_IPTV_LOG=none CXXFLAGS="-Wall -Wextra -Wpedantic -Werror $sanitize"
cmake -S cpp -B cpp/build
cmake --build cpp/build
ctest --test-dir cpp/build --output-on-failure -j 2 | tee out
grep -q '100% tests passed, 0 tests failed out of 2' out

if [ -z "$(find "$prefix" -name '_native.*.so')" ]; then
    echo "The Python variant is left out: the compiled module is not built"
    exit 0
fi
export PYTHONPATH=$prefix/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1
cd python
pytest-3 -q -p no:cacheprovider | tee out
grep -q '6 passed' out
mypy --strict --cache-dir "$build/tests/kits/subtitle-logger-mypy" --python-executable /usr/bin/python3 subtitle_logger.py tests/test_subtitle_logger.py

echo "A mistake in the application fails its tests"
sed -i 's/languages.index(self._audio)/0/' subtitle_logger.py
if pytest-3 -q -p no:cacheprovider -k selects_the_language >out; then
    echo "the tests have not noticed it"
    exit 1
fi
grep -q 'SetCurrentAudioByIndex index=1 did not come within 2 s: instead came SetCurrentAudioByIndex index=0' out
