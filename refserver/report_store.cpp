#include "refserver/report_store.h"

#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "seal/sha256.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

constexpr int longestWait = 10'000;  // milliseconds for another writer

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinishStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// An open file; its operations throw std::runtime_error with SQLite's reason.
class Database {
 public:
  Database(const std::string& path, int flags) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
    database_.reset(opened);
    if (code != SQLITE_OK) fail();
    sqlite3_busy_timeout(opened, longestWait);
  }

  class Statement {
   public:
    Statement(Database& database, const char* sql) : database_(database) {
      sqlite3_stmt* made = nullptr;
      if (sqlite3_prepare_v2(database.database_.get(), sql, -1, &made, nullptr) != SQLITE_OK) database.fail();
      statement_.reset(made);
    }
    Statement& bind(int index, const std::string& text) {
      sqlite3_bind_text64(statement_.get(), index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
      return *this;
    }
    Statement& bind(int index, double number) {
      sqlite3_bind_double(statement_.get(), index, number);
      return *this;
    }
    /// Whether there is another row.
    bool step() {
      const int code = sqlite3_step(statement_.get());
      if (code != SQLITE_ROW && code != SQLITE_DONE) database_.fail();
      return code == SQLITE_ROW;
    }
    std::string text(int column) {
      const auto* begin = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
      return {begin, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
    }
    double real(int column) { return sqlite3_column_double(statement_.get(), column); }
    std::int64_t integer(int column) { return sqlite3_column_int64(statement_.get(), column); }

   private:
    Database& database_;
    std::unique_ptr<sqlite3_stmt, FinishStatement> statement_;
  };

 private:
  [[noreturn]] void fail() const {
    throw std::runtime_error(fmt::format("the report store: {}", sqlite3_errmsg(database_.get())));
  }
  std::unique_ptr<sqlite3, CloseDatabase> database_;
};

std::string fileIn(const std::string& folder) {
  return folder + "/reports.sqlite";
}

Database openForReading(const std::string& folder) {
  return {fileIn(folder), SQLITE_OPEN_READONLY};
}

Database openForWriting(const std::string& folder) {
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path());
  ::mkdir(folder.c_str(), 0700);  // what fails here fails the opening
  Database database(fileIn(folder), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  Database::Statement(database,
                      "CREATE TABLE IF NOT EXISTS reports (id TEXT PRIMARY KEY, arrived REAL NOT NULL, body TEXT "
                      "NOT NULL)")
      .step();
  return database;
}

/// What `work` answers, or why the store failed it.
template <class Work>
auto attempt(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
}

}  // namespace

Result<std::string> ReportStore::put(const std::string& body, double arrived) const {
  return attempt([&]() -> Result<std::string> {
    const std::string id = hexEncode(seal::sha256(body));
    Database database = openForWriting(folder_);
    Database::Statement(database,
                        "INSERT INTO reports (id, arrived, body) VALUES (?, ?, ?) "
                        "ON CONFLICT (id) DO UPDATE SET arrived = excluded.arrived")
        .bind(1, id)
        .bind(2, arrived)
        .bind(3, body)
        .step();
    return id;
  });
}

Result<std::vector<StoredReport>> ReportStore::list() const {
  return attempt([&]() -> Result<std::vector<StoredReport>> {
    std::vector<StoredReport> reports;
    if (!std::filesystem::exists(fileIn(folder_))) return reports;
    Database database = openForReading(folder_);
    Database::Statement rows(database, "SELECT id, arrived, length(body) FROM reports ORDER BY arrived, id");
    while (rows.step()) reports.push_back({rows.text(0), rows.real(1), rows.integer(2)});
    return reports;
  });
}

Result<std::string> ReportStore::body(const std::string& idStart) const {
  return attempt([&]() -> Result<std::string> {
    const Failure none{fmt::format("there is no report {}", idStart)};
    if (idStart.empty() || !std::filesystem::exists(fileIn(folder_))) return none;
    Database database = openForReading(folder_);
    Database::Statement rows(database, "SELECT body FROM reports WHERE substr(id, 1, length(?1)) = ?1 LIMIT 2");
    rows.bind(1, idStart);
    if (!rows.step()) return none;
    std::string body = rows.text(0);
    if (rows.step()) return Failure{fmt::format("several reports begin with {}", idStart)};
    return body;
  });
}

}  // namespace vorlu::refserver
