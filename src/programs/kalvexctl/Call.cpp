#include "programs/kalvexctl/Call.h"

#include "app/ServerAddresses.h"
#include "platform/GettextTranslator.h"
#include "platform/IniProfile.h"
#include "platform/NetworkAddress.h"
#include "text/CodePage.h"

namespace kalvex::kalvexctl {

namespace {

bool IsPlainTextMeant(const ControlOptions& options) {
    std::string host;
    std::uint16_t port = 0;
    return options.plainText ||
           (platform::ReadAddress(options.address, host, port) && platform::IsLoopback(host));
}

// By the rules of the section that the profile has for this.
vantrel::ServerAddress AddressOf(const ControlOptions& options) {
    vantrel::ServerAddress address{.address = options.address,
                                   .certificateName = options.certificateName,
                                   .plainTextAllowed = options.plainText};
    const bool namesFiles = !options.authority.empty() || !options.certificate.empty();
    if (namesFiles || !IsPlainTextMeant(options)) {
        address.tls = vantrel::TlsFiles{options.authority, options.certificate, options.key};
    }
    return address;
}

}  // namespace

int RunKalvexctl(const ControlLine& line) {
    const platform::GettextTranslator translator;
    Loop loop;
    Output output;
    Login login;
    if (const MaybeEnding ending = login.Read(line.options, loop, translator)) {
        Output::Tell(*ending);
        return ending->status;
    }
    platform::IniProfile profile;
    profile.SetProfileConfigEx(profile.GetCommonProfilePath());
    vantrel::ServerAddresses addresses = app::ReadServerAddresses(profile);
    Call call{line.options, line.order.arguments, loop, output, translator, login, addresses};
    if (!line.options.address.empty()) {
        addresses.insert_or_assign(call.GetModule(), AddressOf(line.options));
    }
    Ending ending = line.order.command->run(call);
    if (ending.status == programs::ExitDone && !output.GetFault().empty()) {
        ending = call.Fail(Fault::NotWritten, {text::FromUtf8(output.GetFault())});
    }
    Output::Tell(ending);
    return ending.status;
}

}  // namespace kalvex::kalvexctl
