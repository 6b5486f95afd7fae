"""Texts that people wrote, out of Debian's packages."""
import subprocess


def unpack(work, names):
    """The folder that has a folder for each package, downloaded where it is not there yet."""
    packages = work / "packages"
    packages.mkdir(parents=True, exist_ok=True)
    for name in names:
        if (packages / name).is_dir():
            continue
        subprocess.run(["apt-get", "download", "-q", name], cwd=packages, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        archive = next(packages.glob(f"{name}_*.deb"))
        subprocess.run(["dpkg-deb", "-x", archive, packages / name], check=True)
    return packages
