"""A picture of any size in a Zarr folder, blurred and brightened piece by piece on two workers.

python3 huge_zarr.py SOURCE.zarr RESULT.zarr
"""

import sys

import dask.array as da
from distributed import Client, LocalCluster

from tqx.cluster import apply

if __name__ == "__main__":
    pixels = da.from_zarr(sys.argv[1])
    bright = apply(apply(pixels, "BoxBlurFilter", 5), "GammaFilter", 1.8)
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster):
        bright.to_zarr(sys.argv[2], overwrite=True)
    print(f"{bright.shape[1]} x {bright.shape[0]} pixels in {bright.npartitions} pieces")
