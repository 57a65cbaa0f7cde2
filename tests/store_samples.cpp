#include "tests/store_samples.h"

#include "platform/code_page.h"

std::string failsafeRecord(const std::string& path, const std::string& lines) {
    const std::string key = upperCase(path);
    std::string record = "Veskor failsafe DB 1.7 BEGIN ";
    record.append(key).append("\r\n").append(lines).append("\r\n");
    return record.append("Veskor failsafe DB 1.7 END ").append(key).append("\r\n");
}

void appendFailsafeRecord(const std::string& failsafeFile, const std::string& path,
                          const std::string& lines) {
    writeFileBytes(failsafeFile, readFileBytes(failsafeFile) + failsafeRecord(path, lines));
}

std::vector<std::string> describeOnePerStore(const TempDir& docs, const std::string& failsafeFile,
                                             const Describe& describe) {
    std::vector<std::string> names = {"stream.txt", "exported.txt", "indexed.txt", "failsafe.txt",
                                      "ion.txt",    "caf\xE9.txt",  "none.txt"};
    for (const std::string& name : names)
        docs.write(name, "x");
    describe(docs / "stream.txt", "First line\nsecond line");
    describe(docs / "caf\xE9.txt", "A Latin-1 name");
    docs.write("exported.txt.description", "From the exported\r\nfile\r\n");
    writeFileBytes(docs / "00_index.txt",
                   readFileBytes(docs / "00_index.txt") + "indexed.txt  Indexed\r\n");
    appendFailsafeRecord(failsafeFile, docs / "failsafe.txt", "In the failsafe");
    docs.write("descript.ion", "ion.txt From a\\ncommander\x04\xC2\r\n");
    return names;
}
