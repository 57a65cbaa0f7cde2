#include "tests/store_fixture.h"

#include "platform/xattr.h"
#include "stores/ntfs_streams.h"
#include "stores/summary_info_codec.h"

StoreFixture::StoreFixture() {
    state_.data.appPath = dir_.mkdir("program") + "/";
    state_.data.appDataPath = dir_.mkdir("data") + "/";
    state_.data.failsafeDBpath = dir_.mkdir("data/failsafe db") + "/";
    state_.data.failsafeDBfile = failsafeFile();
    state_.data.configFile = state_.data.appDataPath + "config.dat";
    dir_.write("docs/plan.txt", "the target's own content");
    setTarget("docs/plan.txt");
}

void StoreFixture::setTarget(const std::string& relative) {
    TargetPaths& t = state_.target;
    t.targetFileFullPathname = dir_ / relative;
    std::size_t slash = t.targetFileFullPathname.rfind('/');
    t.targetFile = t.targetFileFullPathname.substr(slash + 1);
    t.indexFilePath = t.targetFileFullPathname.substr(0, slash + 1);
    t.indexFile = t.indexFilePath + "00_index.txt";
}

void StoreFixture::putOldStream(const std::string& text) {
    ASSERT_EQ(replaceStream(target(), "description", text), StreamStatus::Ok);
}

void StoreFixture::putSummary(const std::string& text) {
    ASSERT_EQ(replaceStream(target(), "\x05SummaryInformation", createSummaryInfo(text)),
              StreamStatus::Ok);
}

void StoreFixture::putIndexEntry(const std::string& text) {
    std::string name = state_.target.targetFile;
    name.resize(13, ' ');
    write(state_.target.indexFile, name + text + "\r\n");
}

std::string StoreFixture::summaryText() const {
    return readNTFSDesc(target());
}
