// The program's own messages for failures of the machine it runs on, for servers that it cannot
// reach and for rows that it does not write, all in one place. "%1" is the file, server, column or
// number concerned.
#pragma once

#include <string>
#include <string_view>

#include "app/support/TextFilling.h"

namespace dbkeeper::messages {

inline constexpr std::string_view kCannotRead = "ファイルを読み込めません: %1";
inline constexpr std::string_view kCannotWrite = "ファイルに書き込めません: %1";
inline constexpr std::string_view kNotText = "テキストファイルとして読み取れません: %1";
inline constexpr std::string_view kNoPlainFile = "通常のファイルではありません。";
inline constexpr std::string_view kWriteProtected = "書込みが禁止されています。";
inline constexpr std::string_view kTooLong = "ファイルが大きすぎます: %1";
inline constexpr std::string_view kNoSettingsText =
    "設定ファイルの内容を読み取れません。ファイルは変更されません: %1";
inline constexpr std::string_view kNotInCodePage = "シフトJISで表せない文字があります: %1";

inline constexpr std::string_view kEncrypted = "暗号化されているため、Scriptを生成できません: %1";
inline constexpr std::string_view kNotDbos = "所有者がdboのオブジェクトが見つかりません: %1";
inline constexpr std::string_view kNotAnInteger = "整数ではありません: %1";
inline constexpr std::string_view kNotADecimal = "数値ではありません: %1";
inline constexpr std::string_view kNotADate = "日付ではありません: %1";

inline constexpr std::string_view kNotConnected = "サーバーに接続していません。";
inline constexpr std::string_view kConnectionClosed = "この結果を読み込んだ接続は閉じられました。";
inline constexpr std::string_view kGoneWithoutAnswer =
    "サーバーの応答がないまま接続が切れました。停止したかどうかは確認できません。";
inline constexpr std::string_view kServerNameNeeded = "サーバー名を入力してください。";
inline constexpr std::string_view kNoDriverManager = "ODBCを利用できません。";
inline constexpr std::string_view kNoDriver =
    "ODBCドライバーのFreeTDSが見つかりません。パッケージtdsodbcを導入するか、"
    "設定ファイルの[ODBC]のDriverで指定してください。";
inline constexpr std::string_view kNotForDriver = "%1に「};」を使用することはできません。";
inline constexpr std::string_view kNotForConnection = "接続文字列に使用できません: %1";
inline constexpr std::string_view kNoServerName = "サーバー名として使用できません: %1";
inline constexpr std::string_view kNoPort =
    "「,」の後にはポート番号 (1～65535) を指定してください: %1";
inline constexpr std::string_view kOnlyTcp = "TCP以外では接続できません: %1";
inline constexpr std::string_view kBadTdsVersion =
    "設定ファイルのTDSVersionには7.1、7.2、7.3、7.4のいずれかを指定してください: %1";
inline constexpr std::string_view kNoLocalServer = "付属のサーバーを起動できません: %1";
inline constexpr std::string_view kNoPortInTime = "時間内に応答がありませんでした。";
inline constexpr std::string_view kEndedAtOnce =
    "すぐに終了しました。その原因は標準エラー出力に出ています。";

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
  return FillText(message, {{'1', text}});
}

}  // namespace dbkeeper::messages
