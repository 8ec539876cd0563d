"""A file system over a folder that waits before each answer: slow_disk.py FOLDER MOUNT_POINT FILE_WITH_SECONDS"""
import errno
import os
import pathlib
import sys
import time

import fusepy

ATTRIBUTES = ("st_mode", "st_ino", "st_nlink", "st_uid", "st_gid", "st_size")
TIMES = ("st_atime", "st_mtime", "st_ctime")
SIZES = ("f_bsize", "f_frsize", "f_blocks", "f_bfree", "f_bavail", "f_namemax")


def attributes(path, handle=None):
    found = os.lstat(path)
    return {name: getattr(found, name) for name in ATTRIBUTES} | {name: getattr(found, name + "_ns") for name in TIMES}


ANSWERS = {
    "getattr": attributes,
    "readdir": lambda path, handle: [".", "..", *os.listdir(path)],
    "open": os.open,
    "create": lambda path, mode, info=None: os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, mode),
    "read": lambda path, size, offset, handle: os.pread(handle, size, offset),
    "write": lambda path, data, offset, handle: os.pwrite(handle, data, offset),
    "fsync": lambda path, data_only, handle: os.fsync(handle),
    "release": lambda path, handle: os.close(handle),
    "truncate": lambda path, length, handle=None: os.truncate(path, length),
    "rename": os.rename,
    "chmod": os.chmod,
    "chown": os.chown,
    "utimens": lambda path, times=None: os.utime(path, ns=times),
    "unlink": os.unlink,
    "mkdir": os.mkdir,
    "access": lambda path, mode: 0 if os.access(path, mode) else -errno.EACCES,
    "statfs": lambda path: {name: getattr(os.statvfs(path), name) for name in SIZES},
}


class SlowDisk(fusepy.Operations):
    use_ns = True

    def __init__(self, folder, seconds):
        self.folder, self.seconds = folder, pathlib.Path(seconds)

    def __call__(self, operation, path, *arguments):
        time.sleep(float(self.seconds.read_text() or 0))
        if operation == "rename":
            arguments = (self.folder + arguments[0],)
        answer = ANSWERS.get(operation)
        return answer(self.folder + path, *arguments) if answer else super().__call__(operation, path, *arguments)


if __name__ == "__main__":
    fusepy.FUSE(SlowDisk(sys.argv[1], sys.argv[3]), sys.argv[2], foreground=True)
