#include "quorl/Errors.hpp"

#include <exception>

namespace orvane_detail {

void do_legacy_error(tamber::core::except::IUserException const& error) {
    error.rethrow();
    std::terminate(); // a kind of failure that comes back from rethrow has broken its promise to the caller
}

} // namespace orvane_detail

namespace quorl {

ErrorReport describe(tamber::core::except::IUserException const& error) {
    ErrorReport report;
    report.text = error.what();
    if (auto const* const message = dynamic_cast<tamber::core::except::IMsgIDException const*>(&error)) {
        tamber::core::except::BaseMsgID const& data = message->GetBaseMsgIDObj();
        report.catalog = data.getCatalog();
        report.id = data.getKey();
        report.arguments = data.getArguments();
        return report;
    }
    // The kinds without a message object name catalog and id in one word.
    std::string const& whole = error.GetID();
    std::size_t const colon = whole.rfind(':');
    report.id = colon == std::string::npos ? whole : whole.substr(colon + 1);
    if (colon != std::string::npos) report.catalog = whole.substr(0, colon);
    return report;
}

} // namespace quorl
