// The program's own messages for failures of the machine it runs on and for rows that it does not
// write, all in one place. "%1" is the file, column or number concerned.
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

inline constexpr std::string_view kCannotWriteRows =
    "検索結果の一時ファイルに書き込めません。ディスクの空き容量を確認してください。";
inline constexpr std::string_view kCannotReadRows = "検索結果の一時ファイルを読み込めません。";

inline constexpr std::string_view kNotOneTable =
    "一つのテーブルを検索した結果ではないため、編集できません。";
inline constexpr std::string_view kNoUserTable = "ユーザーテーブルではないため、編集できません: %1";
inline constexpr std::string_view kNothingNamesRow =
    "行を特定できるフィールドがないため、編集できません。";
inline constexpr std::string_view kDeleteRow = "この行を削除してよろしいですか?";
inline constexpr std::string_view kReadOnlyRows = "読取専用のため、編集できません。";
inline constexpr std::string_view kReadOnlyField = "編集できないフィールドです: %1";
inline constexpr std::string_view kNotAValue = "フィールドの型に合わない値です: %1";
inline constexpr std::string_view kRowGone =
    "他の利用者が先に変更または削除したため、この行は書き込まれませんでした。"
    "「最新の情報に更新」してからやり直してください。";
inline constexpr std::string_view kRowsAlike =
    "同じ内容の行が %1 行あり、対象を一行に特定できないため、変更を取り消しました。";
inline constexpr std::string_view kTextLost =
    "サーバーの文字コードで表せない文字があるため、変更を取り消しました: %1";

// The message with `text` in its place.
inline std::string Fill(std::string_view message, std::string_view text) {
  std::string filled(message);
  return filled.replace(filled.find("%1"), 2, text);
}

}  // namespace dbkeeper::messages
