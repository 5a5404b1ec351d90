"""Every photograph of a folder on all cores: what each worker runs, and how it is started.

python3 folder_on_a_cluster.py FOLDER RESULTS [SCHEDULER]
"""

import pathlib
import sys

import tqx
from tqx.cluster import each


def sharpen(source: str, result: str) -> None:
    """One photograph, in a worker."""
    photo = tqx.PictureTQX.from_array(tqx.imread(source))
    if not photo.UnsharpFilter(photo.BoxBlurFilter(None, 2), 0.2, 4):
        raise ValueError(tqx.explain())
    tqx.imwrite(result, photo)


if __name__ == "__main__":
    photos = [str(path) for path in sorted(pathlib.Path(sys.argv[1]).iterdir()) if path.is_file()]
    scheduler = sys.argv[3] if len(sys.argv) > 3 else None
    sys.exit(each(f"{__file__}:sharpen", photos, sys.argv[2], scheduler=scheduler, resume=True))
