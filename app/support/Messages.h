// The program's own messages for failures of the machine it runs on, all in one place. "%1" is the
// file concerned.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper::messages {

inline constexpr std::string_view kCannotRead = "ファイルを読み込めません: %1";
inline constexpr std::string_view kCannotWrite = "ファイルに書き込めません: %1";
inline constexpr std::string_view kTooLong = "ファイルが大きすぎます: %1";
inline constexpr std::string_view kNoSettingsText =
    "設定ファイルの内容を読み取れません。ファイルは変更されません: %1";
inline constexpr std::string_view kNotInCodePage = "シフトJISで表せない文字があります: %1";

// The message with `text` in its place.
inline std::string Fill(std::string_view message, std::string_view text) {
  std::string filled(message);
  return filled.replace(filled.find("%1"), 2, text);
}

}  // namespace dbkeeper::messages
