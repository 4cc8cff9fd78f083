#include "log/EntryWriter.h"

namespace tavrelin::daylog {

EntryWriter::EntryWriter(Connection& connection, std::int64_t file)
    : file_(file), result_(connection, "INSERT INTO result VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      sample_(connection, "INSERT INTO sample VALUES(?, ?, ?, ?, ?, ?)"),
      oddity_(connection, "INSERT INTO oddity VALUES(?, ?, ?, ?)"),
      step_(connection, "INSERT INTO step(description) VALUES(?) ON CONFLICT DO UPDATE SET "
                        "description = description RETURNING id") {}

void EntryWriter::Write(const Entry& entry) {
    const auto line = static_cast<std::int64_t>(entry.line);
    const std::int64_t recovered = entry.recovered ? 1 : 0;
    const Figures& figures = entry.figures;
    lines_ += 1 - recovered;
    if (entry.kind == Entry::Kind::Result) {
        result_
            .With(file_, line, std::string_view(IsoText(entry.time)), figures.absorbance,
                  figures.chlorine, figures.dark, figures.reference, figures.sample, recovered)
            .Run();
    } else if (entry.kind == Entry::Kind::Sample) {
        sample_
            .With(file_, line, std::string_view(IsoText(entry.time)), entry.reading,
                  StepId(entry.step), recovered)
            .Run();
    } else {
        const std::string_view kind = entry.kind == Entry::Kind::Torn ? "torn" : "unknown";
        oddity_.With(file_, line, kind, entry.text).Run();
    }
}

std::int64_t EntryWriter::StepId(std::string_view description) {
    auto known = steps_.find(description);
    if (known == steps_.end()) {
        step_.With(description).Next();
        known = steps_.emplace(description, step_.Integer(0)).first;
        step_.Run();
    }
    return known->second;
}

} // namespace tavrelin::daylog
