"""package_folder.py PREFIX: prints the folder below PREFIX that this Python takes packages from."""

import site
import sys


def main() -> None:
    lib = sys.argv[1].rstrip("/") + "/lib/"
    folders = [folder for folder in site.getsitepackages() if folder.startswith(lib)]
    # Elsewhere Python has to be told (PYTHONPATH); this is where it would look in a Python of its own.
    version = f"python{sys.version_info.major}.{sys.version_info.minor}"
    print("lib/" + (folders[0][len(lib):] if folders else f"{version}/site-packages"))


if __name__ == "__main__":
    main()
