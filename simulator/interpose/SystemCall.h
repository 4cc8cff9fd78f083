#pragma once

#include "simulator/interpose/PathWalk.h"
#include "simulator/run/Simulation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace sim {

struct Trap;

/// What becomes of a system call of the simulated program that no stand-in made.
enum class Treatment {
    StoodIn,  ///< the board answers; as a rule a symbol stands in and it does not come here
    Answered, ///< the board answers, where it is about the board
    Passed,   ///< this machine's kernel answers
    Refused   ///< it ends the run
};

/// One of the kernel's calls.
struct SystemCall {
    long number = 0;
    const char* name = nullptr;
    /// What its arguments are, one letter each: 'p' a path, 'l' a path whose last link is not
    /// followed, 'd' the folder that the next path starts from, 'f' a descriptor, '-' nothing of
    /// that. Before them: '+' it changes what descriptors the process has, '!' it is about the
    /// board whatever its arguments are.
    const char* about = "";
    /// The board's answer, as the kernel gives it; null: the board has none, and a call that is
    /// about the board ends the run.
    long (*answer)(Trap&) = nullptr;
    /// The argument whose AT_SYMLINK_NOFOLLOW makes an 'l' of a 'p'; 0 for none.
    int flags = 0;
    Treatment treatment = Treatment::Passed;
};

/// A system call under way.
struct Trap {
    const SystemCall& call;
    std::array<long, 6> arguments;
    Simulation& simulation;
    std::uint64_t& blocked;        ///< the signals that the thread blocks, a bit each
    std::array<Place, 2> places{}; ///< of its paths, in their order
    std::string onBoard{};         ///< what of the board's it is about, if it is

    Kernel& Board() const { return simulation.kernel; }
    /// An argument, of a call that starts from a folder's descriptor those after it: so that open
    /// and openat are one.
    long Argument(std::size_t which) const {
        const std::string_view about = call.about;
        const bool folder =
            about.substr(std::min(about.find_first_not_of("!+"), about.size()), 1) == "d";
        return arguments.at(which + (folder ? 1 : 0));
    }
    template <typename Type>
    Type As(std::size_t which) const {
        if constexpr (std::is_pointer_v<Type>) {
            return reinterpret_cast<Type>(Argument(which));
        } else {
            return static_cast<Type>(Argument(which));
        }
    }
    int Int(std::size_t which) const { return static_cast<int>(Argument(which)); }
    /// The folder's descriptor.
    int Folder() const { return static_cast<int>(arguments[0]); }
    const char* Path(std::size_t which = 0) const { return places[which].path.c_str(); }
    /// This machine's kernel answers.
    long Pass() const;
    /// The same with other arguments, or of another call.
    static long Pass(long number, const std::array<long, 6>& arguments);
    /// Ends the run.
    [[noreturn]] void Refuse(const std::string& why) const;
};

/// What the kernel would give for a call of the program, in a thread that blocks some signals.
long AnswerSystemCall(long number, const std::array<long, 6>& arguments, std::uint64_t& blocked);

/// The call of a number; null for one that is not known.
const SystemCall* FindSystemCall(long number);

/// Answers of the board, by what they are about.
namespace answers {
using Answer = long(Trap&);
Answer Open, Create, Close, CloseRange, Duplicate, DuplicateTo, Control;
Answer Read, Write, ReadPieces, WritePieces, ReadAt, WriteAt, Seek, Ioctl, Resize, Synchronise,
    Entries, Map, Unmap;
Answer Status, LinkStatus, StatusAt, DescriptorStatus, ExtendedStatus, Access;
Answer MakeDirectory, RemoveDirectory, Unlink, UnlinkAt, Rename, RenameWithFlags, Truncate,
    ReadLink, Space, DescriptorSpace, Mount, Unmount;
Answer ChangeFolder, ChangeFolderTo, CurrentFolder;
Answer Advise, CopyRange, Label, SendFile, SetTimes;
Answer Bind, Connect, Poll, PollMasked, Select, SelectMasked, WaitAlone, Alarm;
Answer Futex, Sleep, SleepUntil, Clock, TimeOfDay, Time, Yield;
Answer SignalAction, SignalMask, Suspend, Exit, Become, Clone, Kill;
} // namespace answers

} // namespace sim
