"""A copy of the project's sources, without what is built in it."""
import pathlib
import shutil


def copy_sources(root, copy):
    def skipped(folder, names):
        return [name for name in names if name in ('build', '.git', '.cache', '__pycache__') or
                (pathlib.Path(folder) / name / 'CMakeCache.txt').exists()]
    shutil.rmtree(copy, ignore_errors=True)
    shutil.copytree(root, copy, ignore=skipped)
