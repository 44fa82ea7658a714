#include "rtcheck_twins/twin_fixture.h"

namespace tollan::testing {
namespace {

bool noFunctionName(void *, char *, size_t) noexcept
{
    return false;
}

void catchReport(int32_t severity, const char *text, uint32_t) noexcept
{
    caughtReports().push_back({severity, text});
}

constexpr rtcheck::RemoteTargetLink kCatchingLink{noFunctionName, catchReport};

void emptyHandOver()
{
    if (rtcheck::ParameterArea *area = rtcheck::parameterArea()) *area = rtcheck::ParameterArea{};
}

}  // namespace

std::vector<CaughtReport> &caughtReports()
{
    static std::vector<CaughtReport> reports;
    return reports;
}

HandOver::HandOver(const void *callee) : area_(rtcheck::parameterArea())
{
    *area_ = rtcheck::ParameterArea{};
    area_->callee = callee;
}

HandOver &HandOver::slot(int32_t argpos, PtrInfo *record, BlkInfo *blk)
{
    area_->slots[argpos - 1] = {record, blk, nullptr};
    if (argpos > area_->slotCount) area_->slotCount = argpos;
    return *this;
}

void TwinTest::SetUp()
{
    caughtReports().clear();
    rtcheck::startThreadBreakSettings();
    rtcheck::setRemoteTargetLink(&kCatchingLink);
    emptyHandOver();
}

void TwinTest::TearDown()
{
    rtcheck::setRemoteTargetLink(nullptr);
    emptyHandOver();
}

}  // namespace tollan::testing
