#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>

namespace tidwen::test {

/// The bytes of the database that the statements create.
inline std::string databaseOf(const std::string& statements) {
    sqlite3* made = nullptr;
    sqlite3_open(":memory:", &made);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(made, sqlite3_close);
    EXPECT_EQ(sqlite3_exec(made, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(made);
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> bytes(
        sqlite3_serialize(made, "main", &size, 0), sqlite3_free);
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

} // namespace tidwen::test
