#include "tests/server/sql/statements.h"

namespace dbkeeper::server {
namespace {

constexpr StatementCase kExpressions[] = {
    // integers
    {"select 7 / 2, -7 / 2, 7 % 3, -7 % 3, 1 + 2 * 3, (1 + 2) * 3", "3|-3|1|-1|7|9"},
    {"select 6 & 3, 6 | 3, 6 ^ 3, ~6", "2|7|5|-7"},
    {"select 2147483647 + 1", "error 8115"},
    {"select convert(bigint, 2147483647) + 1", "2147483648"},
    {"select convert(bigint, 9223372036854775807) + 1", "error 8115"},
    {"select convert(tinyint, 200) + convert(tinyint, 100)", "error 8115"},
    {"select 1 / 0", "error 8134"},
    {"select 5 % 0", "error 8134"},
    {"select 1.0 / 0", "error 8134"},
    {"select 1e0 / 0", "error 8134"},
    {"select -2147483648, - - 5, +3", "-2147483648|5|3"},
    {"select 1 + null, null + 'a'", "null|null"},
    // exact numbers
    {"select 1.0 / 3, 10 / 4.0, 1.10 + 2.20", "0.333333|2.500000|3.30"},
    {"select 99999999999999999999.5 * 2", "199999999999999999999.0"},
    {"select 12345678901234567890123456789012345678", "12345678901234567890123456789012345678"},
    {"select 99999999999999999999999999999999999999 + 1", "error 8115"},
    {"select 1.5 - 3, -1.5, 5.5 % 2", "-1.5|-1.5|1.5"},
    {"select $1.5 + 1, $10 / 3, $2 * $3", "2.5000|3.3333|6.0000"},
    {"select 1.005 * 100, 0.1 + 0.2", "100.500|0.3"},
    {"select 1.5 + 1e0, 2e0 * 3", "2.5|6.0"},
    {"select 1e308 * 10", "error 8115"},
    // texts
    {"select 'a' + 'b' + N'字', 'it''s', \"items\".id from items where id = 1", "ab字|it's|1"},
    {"select 'a' + null", "null"},
    {"select '1' + 2, 1 + '2.5'", "error 245"},
    {"select '1' + 2, 1.0 + '2.5'", "3|3.5"},
    {"select 'a' - 'b'", "error 403"},
    {"select 1 where 'abc ' = 'ABC'", "1"},
    {"select 1 where N'Ａ' = N'a' and N'ｱ' = N'あ' and N'ｶﾞ' in (N'が')", "1"},
    {"select 1 where N'か' = N'が' or N'っ' = N'ツ'", ""},
    {"select 1 where 'é' = 'É'", "1"},
    {"select 1 where 'a' < 'B' and 'b' > 'A' and 'a' <> 'b'", "1"},
    {"select 1 where 'x' = 1", "error 245"},
    {"select 1 where null = null", ""},
    {"select 0x4142 + 0x43, 0x1", "0x414243|0x01"},
    {"select 1 where 0x01 = 0x0100", "1"},
    // dates
    {"select getdate() + 1, getdate() - 0.5", "2004-03-09 10:20:30.500|2004-03-07 22:20:30.500"},
    {"select convert(datetime, '2004-03-01') - convert(datetime, '2004-02-01')",
     "1900-01-30 00:00:00.000"},
    {"select 1 where getdate() > '2004-03-08'", "1"},
    {"select {ts '2004-01-02 03:04:05'}, {d '2004-01-02'}",
     "2004-01-02 03:04:05.000|2004-01-02 00:00:00.000"},
    // conversions
    {"select cast('12' as int), cast(12.9 as int), cast(-12.9 as int), cast($12.5 as int)",
     "12|12|-12|13"},
    {"select cast('12.5' as decimal(5,1)), cast(1.25 as decimal(5,1)), cast(1e0/3 as decimal(9,4))",
     "12.5|1.3|0.3333"},
    {"select cast(123 as varchar(2)), cast(1.5 as varchar), cast('abc' as char(5)) + '|'",
     "*|1.5|abc  |"},
    {"select cast('abcdef' as varchar(3)), cast(N'日本語' as varchar(5)), cast('ab' as nchar(3))",
     "abc|日本|ab "},
    {"select cast(1 as bit), cast(0 as bit), cast(7 as bit), cast('0' as bit)", "1|0|1|0"},
    {"select cast('x' as int)", "error 245"},
    {"select convert(nvarchar(4), 0x3DD800DE4200)", "\U0001F600B"},
    {"select 1 where 'a' = 'A' collate japanese_ci_as", "1"},
    {"select 1 where 'a' = 'A' collate Japanese_BIN", "error 50001"},
    {"select len(cast('x' as text))", "error 8116"},
    {"select substring(cast('xyz' as text), 2, 1)", "y"},
    {"select power(10.0, 3), power(2, 10)", "1000.0|1024"},
    {"select cast('3000000000' as int)", "error 248"},
    {"select cast('300' as tinyint)", "error 244"},
    {"select cast(300 as tinyint)", "error 220"},
    {"select cast(3000000000 as int)", "error 8115"},
    {"select cast(3e9 as int)", "error 232"},
    {"select cast('abc' as decimal(5,1))", "error 8114"},
    {"select cast('abc' as float)", "error 8114"},
    {"select cast(1000 as decimal(3,1))", "error 8115"},
    {"select cast('x' as money)", "error 235"},
    {"select cast('$1,234.5' as money), cast('-5' as smallmoney)", "1234.5000|-5.0000"},
    {"select cast('2004-02-30' as datetime)", "error 242"},
    {"select cast('no date' as datetime)", "error 241"},
    {"select cast('2004-01-02 10:20:40' as smalldatetime)", "2004-01-02 10:21:00.000"},
    {"select cast('1899-01-01' as smalldatetime)", "error 296"},
    {"select cast(38000 as datetime), cast(0.5 as datetime)",
     "2004-01-16 00:00:00.000|1900-01-01 12:00:00.000"},
    {"select cast('2004-01-02T03:04:05.678' as datetime), cast('10:20 PM' as datetime)",
     "2004-01-02 03:04:05.677|1900-01-01 22:20:00.000"},
    {"select cast('Mar 5 2004' as datetime), cast('5 March 2004' as datetime), cast('' as "
     "datetime)",
     "2004-03-05 00:00:00.000|2004-03-05 00:00:00.000|1900-01-01 00:00:00.000"},
    {"select cast('03/05/04' as datetime), convert(datetime, '03/05/04', 3)",
     "2004-03-05 00:00:00.000|2004-05-03 00:00:00.000"},
    {"select cast('6F9619FF-8B86-D011-B42D-00C04FC964FF' as uniqueidentifier)",
     "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
    {"select cast('6F9619FF' as uniqueidentifier)", "error 8169"},
    {"select cast(258 as binary(4)), cast(0x0102 as int), cast('AB' as varbinary(4))",
     "0x00000102|258|0x4142"},
    {"select convert(varchar, getdate(), 111), convert(varchar(30), getdate(), 120)",
     "2004/03/08|2004-03-08 10:20:30"},
    {"select convert(varchar(30), getdate()), convert(varchar(30), getdate(), 109)",
     "Mar  8 2004 10:20AM|Mar  8 2004 10:20:30:500AM"},
    {"select convert(char(8), getdate(), 112), convert(varchar(30), getdate(), 126)",
     "20040308|2004-03-08T10:20:30.500"},
    {"select convert(varchar(30), getdate(), 999)", "error 281"},
    {"select convert(varchar(20), $1234567.891, 1), convert(varchar(20), $1.555), convert(varchar, "
     "$2, 2)",
     "1,234,567.89|1.56|2.0000"},
    {"select convert(varchar(20), 0.1e0), convert(varchar(20), 1234567e0), convert(varchar(30), "
     "1e0/3, 2)",
     "0.1|1.23457e+006|3.333333333333333e-001"},
    {"select convert(sysname, 'x'), convert(double precision, 2), convert(national char "
     "varying(3), 'abcd')",
     "x|2.0|abc"},
    // choices
    {"select isnull(null, 5), isnull('ab', 'c'), coalesce(null, null, 3), nullif(1, 1), nullif(2, "
     "1)",
     "5|ab|3|null|2"},
    {"select coalesce(null, 1, 2.5), case when 1 = 2 then 1 end", "1.0|null"},
    {"select 'x' collate Japanese_CI_AS", "x"},
};

constexpr StatementCase kFunctions[] = {
    {"select len('abc  '), len(''), len(N'日本'), datalength('日本 '), datalength(N'日本'), "
     "datalength(5)",
     "3|0|2|5|4|4"},
    {"select left('abcdef', 2), right('abcdef', 2), substring('abcdef', 2, 3), substring('abc', 0, "
     "2)",
     "ab|ef|bcd|a"},
    {"select left('abc', -1)", "error 536"},
    {"select charindex(N'が', N'ｱｶﾞｶ'), charindex(N'カ', N'ｶﾞか'), charindex(N'b', N'ａｂｃ', 2), "
     "charindex('a ', 'aa b')",
     "2|3|2|2"},
    {"select patindex(N'%ガ_%', N'ｶｶﾞｶ'), patindex('%b%a', 'abcba'), patindex('a%', 'xa'), "
     "patindex('%[b-c]', 'abac')",
     "2|2|0|4"},
    {"select replace(N'ｶﾞラス硝子', N'ガ', N'x'), replace(N'ａbA', 'A', ''), replace('abc', '', "
     "'x')",
     "xラス硝子|b|abc"},
    {"select len(replace(replicate('a', 4000), 'a', 'abc')), upper(N'ωяⅳａß'), lower(N'ΩЯⅣＡß')",
     "8000|ΩЯⅣＡß|ωяⅳａß"},
    {"select charindex('C', 'abcabc'), charindex('c', 'abcabc', 4), charindex('x', 'abc'), "
     "patindex('%B_a%', 'abcabc')",
     "3|6|0|2"},
    {"select replace('aXbxc', 'x', '--'), replicate('ab', 3), reverse('abc'), space(2) + '|', "
     "stuff('abcdef', 2, 3, 'X')",
     "a--b--c|ababab|cba|  ||aXef"},
    {"select rtrim('a  ') + '|', ltrim('  a'), upper('aé'), lower('ABC')", "a||a|AÉ|abc"},
    {"select str(123.456, 8, 2), str(5), str(12345, 3), char(65), nchar(12354), ascii('A'), "
     "unicode(N'あ')",
     "  123.46|         5|***|A|あ|65|12354"},
    {"select quotename('a]b'), quotename('ab', '''')", "[a]]b]|'ab'"},
    {"select abs(-5), abs(-1.5), sign(-3), ceiling(1.2), floor(-1.2), ceiling(-1.2), floor(5)",
     "5|1.5|-1|2|-2|-1|5"},
    {"select round(123.456, 2), round(123.456, -1), round(15, -1), round(1.55, 1, 1), round(2.5e0, "
     "0)",
     "123.460|120.000|20|1.50|3.0"},
    {"select power(2, 10), power(2.0, 3), sqrt(16), square(3), log10(1000), exp(0), sin(0)",
     "1024|8.0|4.0|9.0|3.0|1.0|0.0"},
    {"select pi()", "3.14159265358979"},
    {"select sqrt(-1)", "error 3623"},
    {"select dateadd(day, 1, '2004-02-28'), dateadd(mm, 1, '2004-01-31'), dateadd(yy, -1, "
     "'2004-02-29')",
     "2004-02-29 00:00:00.000|2004-02-29 00:00:00.000|2003-02-28 00:00:00.000"},
    {"select dateadd(ms, 5, '2004-01-01'), dateadd(hh, 25, '2004-01-01')",
     "2004-01-01 00:00:00.007|2004-01-02 01:00:00.000"},
    {"select datediff(day, '2004-01-01 23:59', '2004-01-02'), datediff(year, '2003-12-31', "
     "'2004-01-01'), datediff(wk, '2004-03-06', '2004-03-07'), datediff(mi, '10:00', '10:01:59')",
     "1|1|1|1"},
    {"select datepart(dw, '2004-03-08'), datepart(wk, '2004-01-04'), datepart(dy, '2004-12-31'), "
     "datepart(qq, '2004-05-01'), datename(month, '2004-05-01'), datename(dw, '2004-03-08')",
     "2|2|366|2|May|Monday"},
    {"select year(getdate()), month(getdate()), day(getdate()), datepart(ms, getdate())",
     "2004|3|8|500"},
    {"select getdate(), current_timestamp, {fn getdate()}",
     "2004-03-08 10:20:30.500|2004-03-08 10:20:30.500|2004-03-08 10:20:30.500"},
    {"select dateadd(yy, 9000, getdate())", "error 517"},
    {"select datediff(ms, '1900-01-01', '2004-01-01')", "error 535"},
    {"select datepart(nothing, getdate())", "error 155"},
    {"select isdate('2004-02-30'), isdate('2004/2/3'), isnumeric('1.5'), isnumeric('x'), "
     "isnumeric('$5')",
     "0|1|1|0|1"},
    {"select @@spid, @@identity, db_name(), object_id('items'), serverproperty('Edition')",
     "51|7|test|1|value"},
    {"select len(convert(varchar(40), newid()))", "36"},
    {"select count(*) from items where rand() between 0 and 1", "4"},
    {"select nothing(1)", "error 195"},
    {"select len()", "error 174"},
    {"select substring('abc', 1)", "error 174"},
    {"select charindex('a')", "error 189"},
    {"select dbo.f(1)", "error 50001"},
    {"select stdev(id) from items", "error 50001"},
    {"select avg(id), avg(convert(float, id)), sum(convert(money, price)), count_big(*) from items",
     "2|2.5|24.7500|4"},
    {"select sum(distinct price), avg(distinct amount) from items join orders on item = items.id",
     "21.50|4"},
};

}  // namespace

std::span<const StatementCase> ExpressionCases() { return kExpressions; }
std::span<const StatementCase> FunctionCases() { return kFunctions; }

}  // namespace dbkeeper::server
