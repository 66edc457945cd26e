#pragma once

namespace zq {

// Fills G().CompanyItems from the first row of myCompany on conn: name and value in turn, 22
// entries, or none when the table is empty. The names follow the language.
void LoadCompany();

} // namespace zq
