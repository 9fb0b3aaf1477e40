#include "tests/server/sql/statements.h"

namespace dbkeeper::server {

const std::string_view kSetup = R"(
create table items (id int not null primary key, name varchar(20) null, price decimal(10,2) null,
                    kind char(2) null, born datetime null)
create table orders (id int identity(1,1), item int not null, amount smallint null default (1),
                     note nvarchar(10) null)
create table kinds (code char(2), [説明 文] nvarchar(30))
insert into items values (1, 'Apple', 1.5, 'a', '2004-01-02')
insert items (id, name, price, kind) values (2, 'banana', 20, 'b')
insert items select 3, 'cherry ', 3.25, 'a', '20040305 10:20'
insert items (id, name) values (4, null)
insert orders (item, amount) values (1, 5)
insert orders (item) values (1)
insert orders (item, amount, note) values (2, 7, N'メモ')
insert kinds values ('a', N'果物'); insert kinds values ('b', N'黄色')
)";

namespace {

constexpr StatementCase kQueries[] = {
    {"select * from items where id = 1", "1|Apple|1.50|a |2004-01-02 00:00:00.000"},
    {"select id from test.dbo.items order by id desc", "4;3;2;1"},
    {"select id from test..[items] where name = 'APPLE'", "1"},
    {"select id from items where name = 'cherry'", "3"},
    {"select id from items where name in ('BANANA', 'cherry  ') order by 1", "2;3"},
    {"select id from items where name not in ('banana')", "1;3"},
    {"select id from items where price = 20", "2"},
    {"select id from items where price > 3", "2;3"},
    {"select id from items where price between 1.50 and 3.250 order by price", "1;3"},
    {"select id from items where not (price < 2 or name is null)", "2;3"},
    {"select id from items where born >= '2004/3/5'", "3"},
    {"select id from items where born = '20040102'", "1"},
    {"select name from items order by name", "null;Apple;banana;cherry "},
    {"select i.name n, o.amount from items i, orders as o where i.id = o.item order by o.amount",
     "Apple|1;Apple|5;banana|7"},
    {"select items.name, orders.amount from items inner join orders on items.id = orders.item "
     "where orders.note is not null",
     "banana|7"},
    {"select i.id, o.id from items i left join orders o on o.item = i.id and o.amount > 4 "
     "order by 1",
     "1|1;2|3;3|null;4|null"},
    {"select i.id, k.[説明 文] from items i full outer join kinds k on k.code = i.kind "
     "order by i.id",
     "1|果物;2|黄色;3|果物;4|null"},
    {"select count(*) from items cross join kinds", "8"},
    {"select count(*) from items a join orders b join kinds c on c.code = 'a' on a.id = b.item",
     "3"},
    {"select kind, count(*), sum(price), avg(price), min(name), max(name) from items "
     "group by kind order by kind",
     "null|1|null|null|null|null;a |2|4.75|2.375000|Apple|cherry ;b "
     "|1|20.00|20.000000|banana|banana"},
    {"select upper(kind) from items group by upper(kind) having count(*) > 1", "A "},
    {"select count(distinct kind), count(kind), count(*) from items", "2|3|4"},
    {"select distinct kind from items order by kind desc", "b ;a ;null"},
    {"select top 2 id from items order by id desc", "4;3"},
    {"select count(*) from (select 'a' x union select 'A ' union select 'b') d", "2"},
    {"select 1 a union all select 2.50 union all select null", "1.00;2.50;null"},
    {"(select 1) union all (select top 1 id from items order by id desc)", "1;4"},
    {"select id from items where id in (select item from orders)", "1;2"},
    {"select id from items i where exists (select * from orders o where o.item = i.id)", "1;2"},
    {"select id from items i where not exists (select 1 from orders where item = i.id)", "3;4"},
    {"select id, (select max(amount) from orders where item = items.id) from items",
     "1|5;2|7;3|null;4|null"},
    {"select (select id from items where id = 2)", "2"},
    {"select id from items where price >= all (select price from items where price is not null)",
     "2"},
    {"select id from items where id = any (select item from orders where amount > 6)", "2"},
    {"select d.total from (select item, sum(amount) as total from orders group by item) as d "
     "order by d.total desc",
     "7;6"},
    {"select x, y from (select id, name from items where id < 3) d (x, y)", "1|Apple;2|banana"},
    {"select i.*, 1 as one from items i where i.id = 4", "4|null|null|null|null|1"},
    {"select total = id + 1, 'label' = name, price \"cost\" from items where id = 1",
     "2|Apple|1.50"},
    {"select case kind when 'A' then 'first' when 'b' then 'second' else 'none' end from items",
     "first;second;first;none"},
    {"select case when price > 3 then price else 0 end from items where id <= 2", "0.00;20.00"},
    {"select id from items where name like '%AN%'", "2"},
    {"select id from items where name like '[a-b]%' order by id", "1;2"},
    {"select id from items where name like '[^a]_e%'", "3"},
    {"select id from items where name like 'cherr_' or name not like '%'", "3"},
    {"select 1 where '50%' like '50!%' escape '!'", "1"},
    {"select 1 where 'ab ' like 'ab' and cast('ab' as char(5)) like '%b'", "1"},
    {"select 1 where N'ab ' like 'ab' or cast('ab' as nchar(5)) like '%b'", ""},
    {"select id as number from items order by number desc", "4;3;2;1"},
    {"select name from items order by price * -1", "null;banana;cherry ;Apple"},
    {"select objname, value from ::fn_listextendedproperty(default, 'user', 'dbo', 'table', "
     "default, default, default)",
     "items|user"},
    {"select *  from ::fn_listextendedproperty (NULL, 'user', 'dbo', 'table', 'items', default, "
     "default) where name = 'MS_Description'",
     "TABLE|items|MS_Description|user"},
    {"select id from items where (kind = 'a')and       (price<2) order by name", "1"},
    {"select Top 2\r\n       id,\r\n       name\r\n  from [items] where (id               = '1')",
     "1|Apple"},
    {"select k.code from kinds k (nolock) where k.code = N'A'", "a "},
    {"select id from items with (nolock, index(1)) where id = 1 option (fast 1)", "1"},
    {"/* a /* nested */ comment */ select -- to the end\n 1;;select 2", "1;2"},
    {"select a.id from items a left join orders o on o.item = a.id where o.id is null order by 1",
     "3;4"},
    {"select name from items where id = 1 union select [説明 文] from kinds where code = 'b'",
     "Apple;黄色"},
    {"begin select 1 begin select 2 end end; select 3", "1;2;3"},
    {"select top 1 name from items group by name order by count(*) desc, name desc", "cherry "},
    {"select sum(amount) from orders where 1 = 2", "null"},
    {"select cast('a' as text) union all select cast('b' as text)", "a;b"},
    {"select 1 having 1 = 1", "1"},
    {"select 'x' from items order by count(*)", "x"},
    {"select 'x', 2 from items having count(*) > 3", "x|2"},
    {"select 'x' from items having count(*) > 4", ""},
    {"select 'x' from items where 1 = 2 having count(*) = 0", "x"},
    {"select 'x' from items where 1 = 2 having 1 = 1", "x"},
    {"select 'x' from items where 1 = 2 order by max(id)", "x"},
    {"select id from items i where exists (select * from orders o where o.item = i.id "
     "having count(*) > 1)",
     "1"},
    {"select id from items where price = 3.2500 or price = $20 order by 1", "2;3"},
    {"select min(price), max(born) from items", "1.50|2004-03-05 10:20:00.000"},
};

}  // namespace

std::span<const StatementCase> QueryCases() { return kQueries; }

}  // namespace dbkeeper::server
