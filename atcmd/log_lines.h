// The place each message of this subsystem names. Log filters on devices know the messages by these
// numbers, so they stay when the code moves.
#pragma once

namespace fairlead::atcmd {

inline constexpr const char* kSource = "atcmd";

inline constexpr int kSpeedLine = 115;
inline constexpr int kSettingsLine = 140;
inline constexpr int kSignalLine = 233;

inline constexpr int kSendMaskLine = 420;
inline constexpr int kSentLine = 434;
inline constexpr int kWriteErrorLine = 440;
inline constexpr int kShortWriteLine = 450;
inline constexpr int kWaitErrorLine = 477;
inline constexpr int kReadErrorLine = 492;
inline constexpr int kReceivedLine = 510;
inline constexpr int kSendUnmaskLine = 545;
inline constexpr int kSendSignalLine = 556;

inline constexpr int kNoPathLine = 584;
inline constexpr int kMemoryLine = 590;
inline constexpr int kOpenMaskLine = 647;
inline constexpr int kOpeningLine = 654;
inline constexpr int kOpenUnmaskLine = 673;
inline constexpr int kOpenSignalLine = 687;
inline constexpr int kOpenedLine = 699;

inline constexpr int kCloseMaskLine = 740;
inline constexpr int kCloseUnmaskLine = 756;
inline constexpr int kCloseSignalLine = 770;
inline constexpr int kClosedLine = 777;

}  // namespace fairlead::atcmd
