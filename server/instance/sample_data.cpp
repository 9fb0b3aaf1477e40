// The contents of the sample databases, as batches of the dialect.
#include <array>

#include "server/instance/sample_instance.h"

namespace dbkeeper::server {

namespace {

constexpr SampleDatabase kDatabases[] = {{5, "販売管理"}, {6, "郵便番号"}, {7, "旧販売管理"}};

constexpr int kCustomers = 300;
constexpr int kProducts = 120;
constexpr int kOrders = 1200;
constexpr int kStaff = 40;

constexpr std::array<const char*, 12> kFamilyNames = {
    "佐藤", "鈴木", "高橋", "田中", "伊藤", "渡辺", "山本", "中村", "小林", "加藤", "吉田", "髙木"};
constexpr std::array<const char*, 10> kGivenNames = {"一郎", "花子", "健二",   "由美", "誠",
                                                     "恵子", "直樹", "真由美", "大輔", "千尋"};
constexpr std::array<const char*, 8> kTowns = {
    "東京都千代田区",     "大阪府大阪市北区",   "愛知県名古屋市中区", "北海道札幌市中央区",
    "福岡県福岡市博多区", "宮城県仙台市青葉区", "広島県広島市中区",   "神奈川県横浜市西区"};
constexpr std::array<const char*, 8> kTrades = {"商事", "工業", "物産", "製作所",
                                                "電機", "食品", "運輸", "建設"};
constexpr std::array<const char*, 10> kGoods = {"ボールペン", "ノート",  "消しゴム", "ホチキス",
                                                "封筒",       "付箋",    "電卓",     "ファイル",
                                                "はさみ",     "マーカー"};

template <std::size_t Count>
const char* Pick(const std::array<const char*, Count>& words, int i) {
  return words.at(static_cast<std::size_t>(i) % Count);
}

std::string Number(int value) { return std::to_string(value); }

std::string TwoDigits(int value) { return (value < 10 ? "0" : "") + Number(value); }

// A date of the years 2002 to 2005.
std::string DateText(int i) {
  return "'" + Number(2002 + i % 4) + TwoDigits(1 + i * 7 % 12) + TwoDigits(1 + i * 11 % 28) + "'";
}

constexpr const char* kTables = R"(use [販売管理]
create table 得意先 (
  得意先コード int not null constraint PK_得意先 primary key,
  得意先名 nvarchar(60) not null,
  フリガナ nvarchar(60) null,
  住所 nvarchar(120) null,
  電話番号 varchar(16) null,
  与信限度額 money not null constraint DF_得意先_与信限度額 default (1000000)
    constraint CK_得意先_与信限度額 check (与信限度額 >= 0),
  取引停止 bit not null constraint DF_得意先_取引停止 default (0),
  登録日 datetime not null constraint DF_得意先_登録日 default (getdate()))
create table 商品 (
  商品コード char(6) not null constraint PK_商品 primary key,
  商品名 nvarchar(80) not null,
  単価 money not null,
  重量 decimal(9,3) null,
  発売日 smalldatetime null,
  説明 ntext null)
create table 社員 (
  社員番号 int identity(1,1) not null constraint PK_社員 primary key,
  氏名 nvarchar(40) not null,
  生年月日 datetime null,
  時給 smallmoney null,
  勤続年数 tinyint null,
  評価 float null,
  在籍 bit not null,
  経歴 text null,
  写真 image null,
  識別子 uniqueidentifier not null constraint DF_社員_識別子 default (newid()))
create table 受注 (
  受注番号 int identity(1,1) not null constraint PK_受注 primary key,
  得意先コード int not null constraint FK_受注_得意先 references 得意先 (得意先コード),
  社員番号 int null constraint FK_受注_社員 references 社員 (社員番号),
  受注日 datetime not null,
  納期 smalldatetime null,
  備考 nvarchar(200) null)
create table 受注明細 (
  受注番号 int not null constraint FK_受注明細_受注 references 受注 (受注番号) on delete cascade,
  行番号 smallint not null,
  商品コード char(6) not null constraint FK_受注明細_商品 references 商品 (商品コード),
  数量 int not null constraint CK_受注明細_数量 check (数量 > 0),
  単価 money not null,
  値引率 decimal(5,2) null,
  constraint PK_受注明細 primary key (受注番号, 行番号))
create index IX_得意先_フリガナ on 得意先 (フリガナ)
create unique index IX_商品_商品名 on 商品 (商品名)
create index IX_受注_受注日 on 受注 (受注日 desc, 得意先コード)
)";

constexpr const char* kOrderView = R"(create view 受注一覧 as
select o.受注番号, o.受注日, c.得意先名, sum(d.数量 * d.単価) as 金額
from 受注 o join 得意先 c on c.得意先コード = o.得意先コード
  join 受注明細 d on d.受注番号 = o.受注番号
group by o.受注番号, o.受注日, c.得意先名)";

constexpr const char* kStaffView = R"(create view 在籍社員 as
select 社員番号, 氏名, 勤続年数 from 社員 where 在籍 = 1)";

constexpr const char* kProcedure = R"(create procedure 得意先別受注 @得意先コード int as
select 受注番号, 受注日, 備考
from 受注
where 得意先コード = @得意先コード
order by 受注日)";

constexpr const char* kTrigger =
    R"(create trigger TR_受注明細_更新 on 受注明細 for insert, update as
if exists (select * from inserted where 数量 > 10000)
  rollback transaction)";

// Description and note of a table or, where the column is given, of a column.
struct Description {
  const char* table;
  const char* column;
  const char* text;
  const char* note;
};
constexpr Description kDescriptions[] = {
    {"得意先", nullptr, "得意先マスタ", "経理部が登録する"},
    {"商品", nullptr, "商品マスタ", nullptr},
    {"社員", nullptr, "社員マスタ", "個人情報を含むため取扱注意"},
    {"受注", nullptr, "受注の見出し", nullptr},
    {"受注明細", nullptr, "受注の明細行", "受注を削除すると一緒に消える"},
    {"得意先", "得意先コード", "得意先を識別する番号", nullptr},
    {"得意先", "与信限度額", "掛売りの上限額(円)", "年に一度見直す"},
    {"商品", "単価", "標準の販売単価(円)", nullptr},
    {"受注明細", "値引率", "単価からの値引き(%)", nullptr},
};

std::string DescriptionBatch() {
  std::string batch = "use [販売管理]\n";
  for (const Description& description : kDescriptions) {
    std::string place = ", 'user', 'dbo', 'table', [" + std::string(description.table) + "]";
    if (description.column != nullptr) {
      place += ", 'column', [" + std::string(description.column) + "]";
    }
    for (const auto& [name, text] :
         {std::pair{"MS_Description", description.text}, std::pair{"Note", description.note}}) {
      if (text == nullptr) continue;
      batch +=
          "exec sp_addextendedproperty '" + std::string(name) + "', N'" + text + "'" + place + "\n";
    }
  }
  return batch;
}

std::string MasterRows() {
  std::string batch;
  for (int i = 1; i <= kCustomers; ++i) {
    batch +=
        "insert 得意先 (得意先コード, 得意先名, フリガナ, 住所, 電話番号, 与信限度額, "
        "取引停止, 登録日) values (" +
        Number(i) + ", N'" + Pick(kFamilyNames, i) + Pick(kTrades, i / 12) + "株式会社', N'" +
        (i % 3 == 0 ? "ｶﾌﾞｼｷｶﾞｲｼｬ" : "カブシキガイシャ") + Number(i) + "', N'" + Pick(kTowns, i) +
        Number(1 + i % 9) + "-" + Number(1 + i % 20) + "', '03-" + Number(1000 + i) + "-" +
        Number(2000 + i * 3) + "', " + Number(100000 * (1 + i % 50)) + ", " +
        Number(i % 37 == 0 ? 1 : 0) + ", " + DateText(i) + ")\n";
  }
  for (int i = 1; i <= kProducts; ++i) {
    batch += "insert 商品 values ('P" + Number(10000 + i) + "', N'" + Pick(kGoods, i) + " " +
             Number(i) + "号', " + Number(80 + i * 35 % 4000) + ".50, " + Number(i % 12) + "." +
             TwoDigits(i % 100) + "5, " + DateText(i * 5) + ", " +
             (i % 4 == 0 ? "null" : "N'定番の品。①～⑤の色がある。'") + ")\n";
  }
  for (int i = 1; i <= kStaff; ++i) {
    batch += "insert 社員 (氏名, 生年月日, 時給, 勤続年数, 評価, 在籍, 経歴, 写真) values (N'" +
             std::string(Pick(kFamilyNames, i * 5)) + " " + Pick(kGivenNames, i) + "', '" +
             Number(1950 + i) + "0" + Number(1 + i % 9) + "15', " + Number(900 + i * 12) +
             ".2500, " + Number(i % 30) + ", " + Number(i % 5) + ".25, " +
             Number(i % 9 == 0 ? 0 : 1) + ", '" + Pick(kTrades, i) + "部門を経て現職', " +
             (i % 3 == 0 ? "null" : "0x89504E470D0A1A0A") + ")\n";
  }
  return batch;
}

std::string OrderRows() {
  std::string batch;
  for (int i = 1; i <= kOrders; ++i) {
    batch += "insert 受注 (得意先コード, 社員番号, 受注日, 納期, 備考) values (" +
             Number(1 + i * 17 % kCustomers) + ", " +
             (i % 11 == 0 ? "null" : Number(1 + i * 3 % kStaff)) + ", " + DateText(i * 3) + ", " +
             DateText(i * 3 + 1) + ", " + (i % 5 == 0 ? "N'至急'" : "null") + ")\n";
    for (int line = 1; line <= 1 + i % 4; ++line) {
      batch += "insert 受注明細 values (" + Number(i) + ", " + Number(line) + ", 'P" +
               Number(10001 + (i * 7 + line * 13) % kProducts) + "', " +
               Number(1 + (i + line) % 24) + ", " + Number(80 + i * 35 % 4000) + ", " +
               (i % 6 == 0 ? "5.00" : "null") + ")\n";
    }
  }
  return batch;
}

constexpr const char* kSecurity = R"(use master
exec sp_addlogin 'tanaka', 'Tanaka#2000', '販売管理'
exec sp_addlogin 'report', 'Report#2000', '販売管理'
exec sp_addsrvrolemember 'tanaka', 'dbcreator'
use [販売管理]
exec sp_grantdbaccess 'tanaka', 'tanaka'
exec sp_grantdbaccess 'report', 'report'
exec sp_addrole '営業'
exec sp_addrole '閲覧'
exec sp_addrolemember 'db_datareader', 'report'
exec sp_addrolemember '営業', 'tanaka'
exec sp_addrolemember '閲覧', 'report'
grant select, insert, update on 受注 to 営業
grant select on 得意先 to 閲覧
deny delete on 受注 to 営業
)";

constexpr const char* kDevices = R"(use master
exec sp_addumpdevice 'disk', 'BK_販売管理', 'C:\BACKUP\BK_販売管理.bak'
exec sp_addumpdevice 'disk', 'BK_master', 'C:\BACKUP\BK_master.bak'
)";

constexpr const char* kJobs = R"(use msdb
insert syscategories (category_class, category_type, name) values (1, 1, N'[Uncategorized (Local)]')
insert sysjobs values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E01', N'(local)', N'夜間バックアップ', 1,
  N'販売管理を毎日バックアップする', 1, 1, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, '20050301 09:00',
  '20050301 09:00', 1)
insert sysjobsteps values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E01', 1, N'バックアップ', N'TSQL',
  N'backup database [販売管理] to [BK_販売管理] with format', 0, null, 0, 1, 0, 2, 0, null, N'master',
  null, 0, 0, 0, null, 0, 0, 0, 0, 0)
insert sysjobschedules values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E01', N'毎日1時', 1, 4, 1, 1, 0, 0,
  0, 20050301, 99991231, 10000, 235959, 0, 0, '20050301 09:00')
insert sysjobservers values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E01', 0, 5, null, 0, 0, 0)
insert sysjobs values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E02', N'(local)', N'週次集計', 0,
  N'まだ投入していない', 1, 1, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, '20050302 10:30', '20050302 10:30', 1)
insert sysjobsteps values ('6A5B0C10-5D0E-4D60-9A4C-0D2F1B3C4E02', 1, N'集計', N'TSQL',
  N'select count(*) from [受注]', 0, null, 0, 1, 0, 2, 0, null, N'販売管理', null, 0, 0, 0, null, 0,
  0, 0, 0, 0)
)";

// Two media sets: three backups on the one, two on the other.
struct Backup {
  int media;
  const char* name;
  const char* date;
  const char* bytes;
};
constexpr Backup kBackups[] = {
    {1, "BK_DAY_販売管理", "20050301", "1572864"},
    {1, "BK_DAY_販売管理", "20050302", "1573376"},
    {1, "BK_DAY_販売管理", "20050303", "1574400"},
    {2, "手動", "20050304", "1573888"},
    {2, "手動", "20050305", "1574912"},
};

std::string HistoryOf(const Backup& backup, const std::string& id) {
  const std::string date = "'" + std::string(backup.date);
  return "insert backupset (backup_set_uuid, media_set_id, position, name, description, user_name, "
         "database_creation_date, backup_start_date, backup_finish_date, type, backup_size, "
         "database_name, server_name, machine_name, collation_name) values (newid(), " +
         Number(backup.media) + ", 1, N'" + backup.name +
         "', N'販売管理 デイリー・バックアップ', N'sa', " + date + "', " + date + " 01:00:00', " +
         date + " 01:00:12', 'D', " + backup.bytes +
         ", N'販売管理', @@servername, @@servername, N'Japanese_CI_AS')\n"
         "insert backupfile values (" +
         id + ", 1, 1, N'PRIMARY', 8192, 1, 0, 'D', 512, " + backup.bytes +
         ", N'販売管理_Data', 'C:', 'C:\\DATA\\販売管理.mdf')\n"
         "insert backupfile values (" +
         id +
         ", 1, 1, null, 8192, 2, 0, 'L', 512, 524288, N'販売管理_Log', 'C:', "
         "'C:\\DATA\\販売管理_log.ldf')\n";
}

std::string HistoryBatch() {
  std::string batch = "use msdb\nset nocount on\n";
  for (const char* device : {"BK_販売管理", "手動"}) {
    batch += "insert backupmediaset values (newid(), 1, null, null, N'DB Keeper', 0, 1)\n";
    batch += "insert backupmediafamily values (@@identity, 1, newid(), 1, N'" +
             std::string(device) + "', N'C:\\BACKUP\\" + device + ".bak', 2, 512)\n";
  }
  int id = 0;
  for (const Backup& backup : kBackups) batch += HistoryOf(backup, Number(++id));
  return batch;
}

constexpr const char* kReadOnly = R"(use [郵便番号]
create table 郵便番号 (番号 char(7) not null primary key, 都道府県 nvarchar(10) not null,
  市区町村 nvarchar(40) not null)
insert 郵便番号 values ('1000001', N'東京都', N'千代田区千代田')
insert 郵便番号 values ('5300001', N'大阪府', N'大阪市北区梅田')
insert 郵便番号 values ('4600008', N'愛知県', N'名古屋市中区栄')
insert 郵便番号 values ('0600001', N'北海道', N'札幌市中央区北一条西')
insert 郵便番号 values ('8120011', N'福岡県', N'福岡市博多区博多駅前')
use [旧販売管理]
create table 売上 (年月 char(6) not null primary key, 金額 money not null)
insert 売上 values ('199912', 12345678.9000)
use master
alter database [郵便番号] set READ_ONLY
alter database [旧販売管理] set OFFLINE
)";

}  // namespace

std::span<const SampleDatabase> SampleDatabases() { return kDatabases; }

std::vector<std::string> SampleBatches() {
  const std::string rows =
      "use [販売管理]\nset nocount on\nbegin tran\n" + MasterRows() + OrderRows() + "commit tran";
  return {kTables,  kOrderView, kStaffView,     kProcedure, kTrigger, rows, DescriptionBatch(),
          kDevices, kJobs,      HistoryBatch(), kSecurity,  kReadOnly};
}

}  // namespace dbkeeper::server
