"""Brightens a photograph: python3 brighten.py PHOTO RESULT"""

import sys

import tqx

photo = tqx.PictureTQX.from_array(tqx.imread(sys.argv[1]))
bright = photo.GammaFilter(None, 2.2)
if bright is None:
    sys.exit(tqx.explain())
tqx.imwrite(sys.argv[2], bright)
