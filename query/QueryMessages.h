// What the query window says of its own accord, all in one place. "%1" is filled in.
#pragma once

#include <string_view>

namespace dbkeeper::messages {

inline constexpr std::string_view kNoResult = "結果が開かれていません。";
inline constexpr std::string_view kOpenedReadOnly =
    "この結果は読取専用で開かれています。「Edit」を押した状態でOpenし直すと編集できます。";
inline constexpr std::string_view kBadTemplateName =
    "テンプレート名に使用できない文字があるか、名前が長すぎます。";
inline constexpr std::string_view kExportedAsUtf8 =
    "シフトJISで表せない文字があるため、UTF-8 (BOM付き) で出力しました。\r\n最初の箇所: %1";
inline constexpr std::string_view kRowsAffected = "(%1 件処理されました)";
inline constexpr std::string_view kRowsRead = "(%1 件の行があります)";
inline constexpr std::string_view kFurtherResults =
    "ほかに %1 個の結果セットがあります (表示は最初の結果セットのみです)";
inline constexpr std::string_view kMoreMessages = "(以下 %1 件のメッセージは省略しました)";

}  // namespace dbkeeper::messages
