#pragma once

namespace contract {

/// One device's cases, in the order in which they build on each other; each leaves nothing open,
/// exported or mounted. A line is one case: what is called, on which path, with which data, and
/// after "->" what the kernel answers. Lines that begin with "#" explain.
///
///     in FOLDER                  the folder of all following paths that do not begin with "/"
///     NAME = open PATH FLAGS     rd, wr, rdwr; +creat +excl +trunc +append +dir +nofollow +sync
///     read NAME SIZE             also: write NAME TEXT, pread NAME SIZE OFFSET, pwrite, receive
///                                (read that tells only how much), lseek NAME OFFSET set|cur|end,
///                                close, fstat, ftruncate, poll NAME EVENTS MILLISECONDS
///     show PATH, store PATH TEXT open, read or write once, close; "open: ERROR" when that failed
///     stream PATH TEXT           the same by a C++ stream: "no stream" or "no flush" on a failure
///     stat PATH, lstat PATH      type and permissions; size PATH, access PATH f|r|w|x, statfs
///                                PATH, type PATH (of the file system), device PATH (a node's
///                                number), same PATH PATH ("another" for two files), list PATH
///                                NAME ("there" or "missing"), mkdir, rmdir, unlink, rename PATH
///                                TO, truncate PATH SIZE, readlink
///     ioctl NAME REQUEST VALUE   a RD request gives its value
///     message NAME RECORD...     SPI_IOC_MESSAGE of records both:2, tx:2, rx:2 or none:2 bytes,
///                                and, after a slash, bits per word; "x 64" repeats the last
///     NAME = mmap NAME PROTECTION+shared|private SIZE OFFSET, munmap NAME,
///                                peek NAME OFFSET MASK, poke NAME OFFSET VALUE of 32 bits
///     mount SOURCE TARGET TYPE FLAGS OPTIONS, umount TARGET, table TARGET (its line in /etc/mtab)
///
/// An answer is a number, a text in quotes, "ok" or the name of an errno. One that ends in "*" is
/// only the begin.
struct Group {
    const char* name;
    const char* cases;
    /// False for one that needs another card in the slot than a good one.
    bool onAnyBoard = true;
};

extern const char kLines[];
extern const char kLineAttributes[];
extern const char kChannels[];
extern const char kConverter[];
extern const char kAnalog[];
extern const char kMemory[];
extern const char kCard[];
extern const char kCardFiles[];
extern const char kCardNames[];
extern const char kFolders[];
extern const char kPulled[];
extern const char kNoCard[];
extern const char kNoFat[];
extern const char kNoPartition[];
extern const char kLocked[];

} // namespace contract
