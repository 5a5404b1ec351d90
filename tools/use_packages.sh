#!/usr/bin/env bash
# Uses the packages in ./packages as their users would: on a machine to throw away, as root. tools/fresh.sh
# makes such a machine.
set -euxo pipefail

apt-get update -qq
apt-get install -y -qq --no-install-recommends ./packages/picturetqx_*.deb ./packages/python3-picturetqx_*.deb >/dev/null

# A script, and the same from Python.
examples=/usr/share/doc/picturetqx/examples
photo=$examples/photos/seeds.jpg
tqx run $examples/gamma.rbs $photo script.png
python3 -c "import tqx; tqx.imwrite('python.png', tqx.PictureTQX.from_array(tqx.imread('$photo')).GammaFilter(None, 2.2))"
cmp script.png python.png
tqx check --only loading --only calls
zcat /usr/share/man/man1/tqx.1.gz | grep -q "$(tqx --version | cut -d' ' -f2)"
bash -c '. /usr/share/bash-completion/completions/tqx && complete -p tqx'

# A plug-in of one's own.
apt-get install -y -qq --no-install-recommends ./packages/picturetqx-dev_*.deb cmake make g++ pkg-config >/dev/null
cmake -S $examples/plugin -B plugin && cmake --build plugin && ctest --test-dir plugin
tqx --plugin plugin/ColorMixer.so run $examples/plugin/mix.rbs
cmake -S $examples/host -B host && cmake --build host
host/brighten $photo host.png
cmp script.png host.png
cp $photo photo.jpg

# Nothing stays.
apt-get purge -y -qq picturetqx picturetqx-dev python3-picturetqx >/dev/null
left=$(find / -xdev \( -path '*tqx*' \) -not -path '/root/*' -not -path '/proc/*' -not -path '/var/*')
[ -z "$left" ]

# The archive, in a folder of any name; it has what it needs from Debian's libraries.
mkdir "any where"
tar -xzf packages/picturetqx-*.tar.gz --strip-components=1 -C "any where"
"any where/bin/tqx" run "any where/share/doc/picturetqx/examples/gamma.rbs" photo.jpg archive.png
cmp script.png archive.png
PYTHONPATH="any where/lib/python3/dist-packages" python3 -c "import tqx; print(tqx.__version__, tqx.PictureTQX(3, 2, 1).Valid)"
