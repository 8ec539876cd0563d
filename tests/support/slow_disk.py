"""A file system over a folder that waits before each answer: slow_disk.py FOLDER MOUNT_POINT FILE_WITH_SECONDS"""
import errno
import os
import pathlib
import sys
import time

import fusepy

ATTRIBUTES = ("st_mode", "st_ino", "st_nlink", "st_uid", "st_gid", "st_size")
TIMES = ("st_atime", "st_mtime", "st_ctime")


class SlowDisk(fusepy.Operations):
    use_ns = True
    chmod, chown, mkdir, open, unlink = map(staticmethod, (os.chmod, os.chown, os.mkdir, os.open, os.unlink))

    def __init__(self, folder, seconds):
        self.folder, self.seconds = folder, pathlib.Path(seconds)

    def __call__(self, operation, path, *arguments):
        time.sleep(float(self.seconds.read_text() or 0))
        if not hasattr(self, operation):
            raise fusepy.FuseOSError(errno.ENOTSUP)
        return getattr(self, operation)(self.folder + path, *arguments)

    def getattr(self, path, handle=None):
        found = os.lstat(path)
        return {name: getattr(found, name) for name in ATTRIBUTES} | {name: getattr(found, name + "_ns") for name in TIMES}

    def readdir(self, path, handle):
        return [".", "..", *os.listdir(path)]

    def create(self, path, mode, info=None):
        return os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, mode)

    def read(self, path, size, offset, handle):
        return os.pread(handle, size, offset)

    def write(self, path, data, offset, handle):
        return os.pwrite(handle, data, offset)

    def fsync(self, path, data_only, handle):
        return os.fsync(handle)

    def release(self, path, handle):
        return os.close(handle)

    def truncate(self, path, length, handle=None):
        os.truncate(path, length)

    def rename(self, path, to):
        os.rename(path, self.folder + to)

    def utimens(self, path, times=None):
        os.utime(path, ns=times)

    def access(self, path, mode):
        return 0 if os.access(path, mode) else -errno.EACCES

    def statfs(self, path):
        found = os.statvfs(path)
        return {name: getattr(found, name) for name in ("f_bsize", "f_frsize", "f_blocks", "f_bfree", "f_bavail", "f_namemax")}


if __name__ == "__main__":
    fusepy.FUSE(SlowDisk(sys.argv[1], sys.argv[3]), sys.argv[2], foreground=True)
