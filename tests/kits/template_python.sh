#!/bin/bash
# SPDX-License-Identifier: MIT
# Tests the template of a Python application with the installed kit: template_python.sh BUILD SOURCE
. "$(dirname "$0")/../contract/install.sh"

root=$(cd "$source/../.." && pwd)
cp -r "$root/examples/template-python" "$work/application"
cd "$work/application"
export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir PYTHONPATH=$prefix/lib/python3/dist-packages ZV_IPTV_LOG=none
export PYTHONDONTWRITEBYTECODE=1

# The last command of its CI file.
ci=$(sed -n 's/^    - pytest-3/pytest-3/p' ci.yml)
# shellcheck disable=SC2086
$ci -p no:cacheprovider | tee out
grep -q '5 passed' out
[ "$(grep -o '<testcase ' report.xml | wc -l)" = 5 ]
mypy --strict --cache-dir "$build/tests/kits/template-mypy" --python-executable /usr/bin/python3 player.py tests/test_player.py

echo "A mistake in the application fails its tests"
sed -i 's/mute_audio(on)/mute_audio(False)/' player.py
if pytest-3 -p no:cacheprovider >out; then
    echo "the tests have not noticed it"
    exit 1
fi
grep -q 'MuteAudio onoff=True did not come within 2 s: instead came MuteAudio onoff=False' out
grep -q 'Conversation with the television' out
