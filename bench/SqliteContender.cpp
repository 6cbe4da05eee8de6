#include "Changes.hpp"
#include "Contenders.hpp"
#include "Dom.hpp"

#include <memory>
#include <sqlite3.h>

namespace zelkor::bench {

namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

void check(int code) {
    if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW)
        throw std::runtime_error(sqlite3_errstr(code));
}

Database openDatabase() {
    sqlite3* database = nullptr;
    check(sqlite3_open(":memory:", &database));
    return {database, &sqlite3_close};
}

void execute(sqlite3* database, char const* text) {
    check(sqlite3_exec(database, text, nullptr, nullptr, nullptr));
}

Statement prepare(sqlite3* database, char const* text) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database, text, -1, &statement, nullptr));
    return {statement, &sqlite3_finalize};
}

/// One row an element, one table for all; a row is written when its element is closed.
class SqliteDom {
  public:
    using Node = sqlite3_int64;

    explicit SqliteDom(sqlite3* database)
        : insert(prepare(database, "INSERT INTO element VALUES(?,?,?,?,?,?,?,?,?)")) {}

    Node open(Node const* parent, std::string_view, bool, Kind kind, Identity const& identity) {
        pending.push_back({.id = ++last, .parent = parent ? *parent : 0, .kind = kind, .identity = identity});
        return last;
    }
    void reserve(Node, std::string_view) {}
    void text(Node, std::string_view name, std::string_view value) {
        if (name == "Name" || name == "Path" || name == "Value")
            pending.back().name = value;
        else
            pending.back().numbers += value.size();
    }
    void number(Node, std::string_view name, unsigned value) {
        if (name == "Line")
            pending.back().line = value;
        else
            pending.back().numbers += value;
    }
    void flag(Node, std::string_view, bool) { ++pending.back().numbers; }
    void references(Node, std::string_view, std::span<Identity const> targets, bool many) {
        if (!many) pending.back().target = targets[0];
    }
    void close(Node) {
        Row const& row = pending.back();
        sqlite3_stmt* const into = insert.get();
        sqlite3_bind_int64(into, 1, row.id);
        sqlite3_bind_int64(into, 2, row.parent);
        sqlite3_bind_int(into, 3, static_cast<int>(row.kind));
        sqlite3_bind_int64(into, 4, static_cast<sqlite3_int64>(row.identity.high));
        sqlite3_bind_int64(into, 5, static_cast<sqlite3_int64>(row.identity.low));
        sqlite3_bind_text(into, 6, row.name.data(), static_cast<int>(row.name.size()), SQLITE_STATIC);
        sqlite3_bind_int(into, 7, static_cast<int>(row.line));
        sqlite3_bind_int(into, 8, static_cast<int>(row.numbers));
        sqlite3_bind_int64(into, 9, static_cast<sqlite3_int64>(row.target.low));
        check(sqlite3_step(into));
        check(sqlite3_reset(into));
        pending.pop_back();
    }

  private:
    struct Row {
        Node id;
        Node parent;
        Kind kind;
        Identity identity;
        std::string_view name{};
        unsigned line = 0;
        std::size_t numbers = 0;
        Identity target{};
    };

    Statement insert;
    std::vector<Row> pending;
    Node last = 0;
};

void build(Stage const& stage, sqlite3* database) {
    execute(database,
            "CREATE TABLE element(id INTEGER PRIMARY KEY, parent INT, class INT, high INT, low INT, "
            "name TEXT, line INT, numbers INT, target INT)");
    execute(database, "BEGIN");
    {
        SqliteDom dom(database);
        DomBuilder<SqliteDom> builder(dom, stage.plan.seed());
        stage.plan.replay(builder);
        dom.close(1); // the project, which stays open to the end
    }
    execute(database, "COMMIT");
}

sqlite3_int64 ask(sqlite3* database, char const* text) {
    Statement const query = prepare(database, text);
    check(sqlite3_step(query.get()));
    return sqlite3_column_int64(query.get(), 0);
}

void create(Stage& stage) {
    Database const database = openDatabase();
    stage.measure([&] { build(stage, database.get()); });
    stage.expect(ask(database.get(), "SELECT count(*) FROM element") == stage.plan.elements(),
                 "rows are missing");
}

void memory(Stage& stage) {
    Database const database = openDatabase();
    stage.measureMemory([&] { build(stage, database.get()); });
}

struct Changer {
    std::vector<sqlite3_int64> symbols;
    std::vector<sqlite3_int64> positions;
    Statement setName;
    Statement setLine;

    explicit Changer(sqlite3* database)
        : setName(prepare(database, "UPDATE element SET name=? WHERE id=?")),
          setLine(prepare(database, "UPDATE element SET line=? WHERE id=?")) {
        Statement const rows =
            prepare(database, "SELECT id, line FROM element WHERE line>0 OR class BETWEEN 5 AND 13");
        while (sqlite3_step(rows.get()) == SQLITE_ROW)
            (sqlite3_column_int(rows.get(), 1) > 0 ? positions : symbols)
                .push_back(sqlite3_column_int64(rows.get(), 0));
    }

    void apply(Stage const& stage) const {
        changeAll(
            stage.plan.seed(), stage.settings.changes, symbols.size(), positions.size(),
            [this](std::size_t at, std::string const& name) {
                sqlite3_bind_text(setName.get(), 1, name.data(), static_cast<int>(name.size()),
                                  SQLITE_STATIC);
                step(setName.get(), symbols[at]);
            },
            [this](std::size_t at, unsigned line) {
                sqlite3_bind_int(setLine.get(), 1, static_cast<int>(line));
                step(setLine.get(), positions[at]);
            });
    }

  private:
    static void step(sqlite3_stmt* statement, sqlite3_int64 id) {
        sqlite3_bind_int64(statement, 2, id);
        check(sqlite3_step(statement));
        check(sqlite3_reset(statement));
    }
};

sqlite3_int64 linesAndNames(sqlite3* database) {
    return ask(database, "SELECT sum(line) + sum(length(name)) FROM element");
}

void change(Stage& stage) {
    Database const database = openDatabase();
    build(stage, database.get());
    sqlite3_int64 const before = linesAndNames(database.get());
    Changer const changer(database.get());
    stage.countUnits(stage.settings.changes);
    stage.measure([&] {
        execute(database.get(), "BEGIN");
        changer.apply(stage);
        execute(database.get(), "COMMIT");
    });
    stage.expect(linesAndNames(database.get()) != before, "nothing was changed");
}

void rollback(Stage& stage) {
    Database const database = openDatabase();
    build(stage, database.get());
    sqlite3_int64 const before = linesAndNames(database.get());
    Changer const changer(database.get());
    execute(database.get(), "BEGIN");
    changer.apply(stage);
    stage.expect(linesAndNames(database.get()) != before, "nothing was changed");
    stage.countUnits(stage.settings.changes);
    stage.measure([&] { execute(database.get(), "ROLLBACK"); });
    stage.expect(linesAndNames(database.get()) == before, "rolling back did not restore the rows");
}

} // namespace

Contender sqliteContender() {
    return {"sqlite", {{"create", create}, {"memory", memory}, {"change", change}, {"rollback", rollback}}};
}

} // namespace zelkor::bench
