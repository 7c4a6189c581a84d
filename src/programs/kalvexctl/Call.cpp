#include "programs/kalvexctl/Call.h"

#include "app/ServerAddresses.h"
#include "platform/GettextTranslator.h"
#include "platform/IniProfile.h"
#include "text/CodePage.h"

namespace kalvex::kalvexctl {

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
        const ControlOptions& options = line.options;
        addresses.insert_or_assign(
            call.GetModule(), app::MakeServerAddress({.source = {},
                                                      .address = options.address,
                                                      .authority = options.authority,
                                                      .certificate = options.certificate,
                                                      .key = options.key,
                                                      .certificateName = options.certificateName,
                                                      .plainTextAllowed = options.plainText}));
    }
    Ending ending = line.order.command->run(call);
    if (ending.status == programs::ExitDone && !output.GetFault().empty()) {
        ending = call.Fail(Fault::NotWritten, {text::FromUtf8(output.GetFault())});
    }
    Output::Tell(ending);
    return ending.status;
}

}  // namespace kalvex::kalvexctl
