#pragma once

#include <QString>

#include "platform/process.h"
#include "platform/result.h"

namespace kibo {

/// What a running browser session leaves on disk for the next start: which processes it consists of. A gateway that is
/// killed, or a driver that crashes, leaves a browser behind that holds the profile; the next start ends exactly
/// that one, known by process id and start time, never by its name: other browsers of the operator are not ours.
struct SessionRecord {
    platform::Process owner;    ///< the gateway
    platform::Process driver;   ///< id 0: not ours (a driver that ran already)
    platform::Process browser;  ///< id 0: not known yet
};

/// Ends the processes of `record` that still run, children included: first the browser, which gets `graceMs` to
/// save its profile, then the driver.
void endProcesses(const SessionRecord& record, int graceMs = 5'000);

/// The session records of one folder: a profile folder, or the program folder for sessions without a profile. There
/// is one file for each gateway, so several gateways can share a folder.
class SessionRecords {
 public:
    explicit SessionRecords(QString folder) : folder_(std::move(folder)) {}

    /// Ends what gateways that are no longer running have left behind, this one's own former session included, and
    /// removes their records. Returns the id of another running gateway with a session here, 0 for none.
    platform::ProcessId endLeftovers() const;

    /// Replaces the record of `record.owner`.
    Result<void> write(const SessionRecord& record) const;
    void remove(const platform::Process& owner) const;

 private:
    QString fileOf(platform::ProcessId owner) const;

    QString folder_;
};

/// Makes a profile free that no running gateway uses; Chrome would refuse to start on it. Removes Chrome's marks of a
/// profile in use when their process has ended, or when the profile comes from another computer. Ends a browser that a
/// driver started on this profile and that is in no record: its driver ended before it could tell of the browser.
void freeProfile(const QString& profileFolder);

/// Removes settings files of the profile that a kill has cut short. ChromeDriver writes them at each start and refuses
/// a profile where it can't read them; Chrome makes them anew. The login is kept elsewhere.
void removeBrokenSettings(const QString& profileFolder);

}  // namespace kibo
