"""The SD card and what the kernel makes of it, as measured on a real Linux 6.1: what each question and each call
about the card is answered. Times are microseconds of board time."""

DAY = "/mnt/sd-card/2026-03-07_logfile.csv"
SLOT = "/sys/block/mmcblk0"
MOUNT_POINT = "/mnt/sd-card"
TABLE = "/etc/mtab"
NOTICED = 700_000  # from a pull to its removal from the kernel's list


class Card:
    """One card with one file, in the slot and not mounted at the start."""

    def __init__(self):
        self.present = True
        self.mounted = False
        self.stale = False  # pulled while it was mounted, put back or not
        self.pulled_at = -NOTICED
        self.exists = False
        self.open = 0
        self.kept = False  # the file stays visible when the rest of a pulled card goes
        self.text = ""  # of the file, on the card

    def world(self, now, what):
        if what == "removed":
            self.present, self.pulled_at, self.stale = False, now, self.mounted
        else:
            self.notice(now)
            self.present = True

    def notice(self, now):
        """The kernel has removed a card that was pulled long enough ago: what is open stays."""
        if self.stale and self.gone(now) and self.open:
            self.kept = True

    def gone(self, now):
        return self.stale and now - self.pulled_at >= NOTICED

    def visible(self, now):
        return self.mounted and self.exists and (self.kept or not self.gone(now))

    def answer(self, now, call, path, data):
        """What the call is answered; data: what is written."""
        self.notice(now)
        if path == SLOT:
            return "ok" if self.present or now - self.pulled_at < NOTICED else "ENOENT"
        if path == TABLE:
            return "card listed" if self.mounted else "card not listed"
        if path == MOUNT_POINT:
            return getattr(self, call)()
        return getattr(self, call + "_file")(now, data)

    def stat(self):
        return "ok"

    def mount(self):
        if self.mounted or not self.present:
            return "EBUSY" if self.mounted else "ENOENT"
        self.mounted = True
        return "ok"

    def umount(self):
        if self.open or not self.mounted:
            return "EBUSY" if self.open else "EINVAL"
        self.mounted = self.stale = self.kept = False
        return "ok"

    def stat_file(self, now, _):
        return "ok" if self.visible(now) else "ENOENT"

    def open_file(self, now, _):
        if not self.visible(now):
            if self.stale or not self.mounted:
                return "ENOSPC"  # nothing is created on a card that was pulled; the instrument opens no other
            self.exists = True
        self.open += 1
        return "ok"

    def write_file(self, _, data):
        """Synchronously mounted: what is written is on the card at once, and whole."""
        if self.stale:
            self.kept = True
            return "EIO"
        self.text += data
        return "ok"

    def close_file(self, *_):
        self.open -= 1
        return "ok"
