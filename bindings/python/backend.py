"""The build backend of pyproject.toml (PEP 517): makes the wheel with nothing but Python's own modules.

So `pip install .` needs no network. The wheel holds the shared libraries: those that the environment
variables JTPDF_LIBRARY and JTPDF_PICTURES_LIBRARY name, or those that CMake makes of the sources around
this folder. The one of pictures is left out where the decoders that it takes are not installed; where
it is in, so are the decoders.
"""

import ast
import base64
import hashlib
import io
import os
import pathlib
import re
import shutil
import subprocess
import sysconfig
import tarfile
import tempfile
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
WINDOWS = os.name == "nt"
LIBRARY_NAME = "libjtpdf-2.dll" if WINDOWS else "libjtpdf.so.2"
PICTURES_NAME = "libjtpdf-pictures.so.0"
# What every system has that a wheel of this kind is for.
SYSTEM_LIBRARIES = re.compile(r"(libc|libm|libdl|librt|libpthread|libstdc\+\+|libgcc_s|ld-linux.*)\.so|"
                              r"libjtpdf\.so|linux-vdso|/")
# Of the library, what makes it; in the source distribution they are in the folder "library".
LIBRARY_SOURCES = ("CMakeLists.txt", "LICENSE", "cmake", "include", "pictures", "src")
OWN_SOURCES = ("pyproject.toml", "backend.py", "README.md", "src")


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    about = project()
    tag = "py3-none-" + re.sub("[-.]", "_", sysconfig.get_platform())
    info = f"{about['name']}-{about['version']}.dist-info"
    files = {f"jtpdf/{path.name}": path.read_bytes()
             for path in sorted((HERE / "src" / "jtpdf").iterdir())
             if path.suffix == ".py" or path.name == "py.typed"}
    with tempfile.TemporaryDirectory() as build:
        library, pictures = shared_libraries(pathlib.Path(build))
        files[f"jtpdf/{LIBRARY_NAME}"] = library.read_bytes()
        if pictures is not None:
            files[f"jtpdf/{PICTURES_NAME}"] = pictures.read_bytes()
            for decoder in decoders_of(pictures, library):
                files[f"jtpdf/decoders/{decoder.name}"] = decoder.read_bytes()
                files.update(license_of(decoder, info))
    files[f"{info}/LICENSE"] = (library_folder() / "LICENSE").read_bytes()
    files[f"{info}/METADATA"] = metadata(about).encode("utf-8")
    files[f"{info}/WHEEL"] = (f"Wheel-Version: 1.0\nGenerator: jtpdf\nRoot-Is-Purelib: false\n"
                              f"Tag: {tag}\n").encode("ascii")
    record = "".join(f"{name},sha256={digest(data)},{len(data)}\n" for name, data in files.items())
    files[f"{info}/RECORD"] = f"{record}{info}/RECORD,,\n".encode("ascii")

    wheel = f"{about['name']}-{about['version']}-{tag}.whl"
    with zipfile.ZipFile(pathlib.Path(wheel_directory) / wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():  # of one time, so that the same files give the same bytes
            entry = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))
            entry.external_attr = 0o100644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)
    return wheel


def build_sdist(sdist_directory, config_settings=None):
    about = project()
    folder = f"{about['name']}-{about['version']}"

    def plain(entry):
        skipped = ("__pycache__" in entry.name or entry.name.endswith((".so.2", ".dll")) or
                   "/corpus" in entry.name)
        entry.uid = entry.gid = entry.mtime = 0
        entry.uname = entry.gname = ""
        return None if skipped else entry

    with tarfile.open(pathlib.Path(sdist_directory) / f"{folder}.tar.gz", "w:gz") as archive:
        for name in OWN_SOURCES:
            archive.add(HERE / name, f"{folder}/{name}", filter=plain)
        for name in LIBRARY_SOURCES:
            archive.add(library_folder() / name, f"{folder}/library/{name}", filter=plain)
        text = metadata(about).encode("utf-8")
        entry = tarfile.TarInfo(f"{folder}/PKG-INFO")
        entry.size = len(text)
        archive.addfile(entry, io.BytesIO(text))
    return f"{folder}.tar.gz"


def project():
    """The table [project] of pyproject.toml, as far as it is used here; Python 3.9 has no reader."""
    text = (HERE / "pyproject.toml").read_text("utf-8")
    table = re.search(r"^\[project\]\n(.*?)^(?=\[|\Z)", text, re.MULTILINE | re.DOTALL)[1]
    pairs = re.findall(r'^([\w-]+) = ("[^"\n]*"|\[.*?^\])$', table, re.MULTILINE | re.DOTALL)
    return {key: ast.literal_eval(value) for key, value in pairs}


def metadata(about):
    lines = ["Metadata-Version: 2.1", f"Name: {about['name']}", f"Version: {about['version']}",
             f"Summary: {about['description']}", "License: MIT",
             f"Requires-Python: {about['requires-python']}",
             *(f"Classifier: {classifier}" for classifier in about["classifiers"]),
             "Description-Content-Type: text/markdown", "",
             (HERE / about["readme"]).read_text("utf-8")]
    return "\n".join(lines)


def digest(data):
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode("ascii")


def library_folder():
    for folder in (HERE / "library", HERE.parent.parent):
        if (folder / "src" / "jtpdf.exports").exists():
            return folder
    raise SystemExit(f"{HERE} is not in the sources of jtpdf, of which the wheel holds the library")


def shared_libraries(build):
    """The library and that of pictures, which is None where there is none."""
    named = os.environ.get("JTPDF_LIBRARY")
    if named:
        pictures = os.environ.get("JTPDF_PICTURES_LIBRARY")
        return pathlib.Path(named), pathlib.Path(pictures) if pictures else None
    if shutil.which("cmake") is None:
        raise SystemExit("cmake is not installed, which makes the library of the wheel; install it, "
                         "or let JTPDF_LIBRARY name the shared library")
    options = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_UNITY_BUILD=ON", "-DBUILD_TESTING=OFF",
               "-DJTPDF_BUILD_TOOLS=OFF",
               f"-DJTPDF_BUILD_PICTURES={'OFF' if WINDOWS else 'ON'}", "-DJTPDF_BUILD_EXAMPLES=OFF",
               "-DJTPDF_INSTALL=OFF"]
    run("cmake", "-S", str(library_folder()), "-B", str(build), *options)
    run("cmake", "--build", str(build), "--parallel", str(os.cpu_count() or 1))
    pictures = build / "pictures" / PICTURES_NAME
    return build / ("bin" if WINDOWS else "src") / LIBRARY_NAME, pictures if pictures.exists() else None


def decoders_of(pictures, library):
    """The shared libraries that the one of pictures takes, all but those of the system."""
    paths = os.pathsep.join(filter(None, [str(library.parent), os.environ.get("LD_LIBRARY_PATH")]))
    listed = subprocess.run(["ldd", str(pictures)], check=True, stdout=subprocess.PIPE, text=True,
                            env={**os.environ, "LD_LIBRARY_PATH": paths}).stdout
    found = re.findall(r"^\s*(\S+) => (\S+)", listed, re.MULTILINE)
    return [pathlib.Path(path).parent / name for name, path in sorted(found)
            if not SYSTEM_LIBRARIES.match(name)]


def license_of(decoder, info):
    """The licence of a decoder, where Debian's packages say whose file it is."""
    if shutil.which("dpkg") is None:
        return {}
    owner = subprocess.run(["dpkg", "-S", str(decoder.resolve())], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True).stdout.partition(":")[0]
    text = pathlib.Path("/usr/share/doc", owner or "none", "copyright")
    return {f"{info}/licenses/{owner}": text.read_bytes()} if text.exists() else {}


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(command)}:\n{done.stdout.decode('utf-8', 'replace')}")
