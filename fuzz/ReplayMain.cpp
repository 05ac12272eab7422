// Feeds every file of the given folders to a fuzz target's entry function, so
// the ordinary sanitizer build checks the accumulated corpus without libFuzzer.
//   fuzz_replay_<target> FOLDER...    (a missing folder holds nothing)
#include <QDir>
#include <QFile>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

#ifdef ORVANE_REPLAY_SANITIZED
#include <sanitizer/common_interface_defs.h>
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

QByteArray failureNote; // names the input being replayed
volatile std::sig_atomic_t noted = 0;

// A failing check aborts and a sanitizer ends the process on its own, so the
// report would not say which input it was without this.
void nameCurrentInput()
{
    if (noted || failureNote.isEmpty())
        return;
    noted = 1;
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, failureNote.constData(), static_cast<size_t>(failureNote.size()));
}

void onAbort(int signal)
{
    nameCurrentInput();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// The bytes go to the target in a buffer of exactly their size, so that reading
// one past the end is caught as it would be under libFuzzer.
void replay(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "fuzz replay: cannot read %s\n", qPrintable(path));
        std::exit(2);
    }
    const QByteArray bytes = file.readAll();
    const auto size = static_cast<size_t>(bytes.size());
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[size]);
    std::memcpy(exact.get(), bytes.constData(), size);
    failureNote = "fuzz replay: failed on " + QFile::encodeName(path) + '\n';
    LLVMFuzzerTestOneInput(exact.get(), size);
}

} // namespace

#ifdef ORVANE_REPLAY_SANITIZED
// Under g++ UBSan has a runtime of its own that ends the process without the
// death callback; aborting instead reaches onAbort. Options given in
// UBSAN_OPTIONS still win.
extern "C" const char *__ubsan_default_options()
{
    return "abort_on_error=1";
}
#endif

int main(int argc, char **argv)
{
    std::signal(SIGABRT, onAbort);
#ifdef ORVANE_REPLAY_SANITIZED
    __sanitizer_set_death_callback(nameCurrentInput);
#endif
    int count = 0;
    for (int index = 1; index < argc; ++index) {
        const QDir folder(QFile::decodeName(argv[index]));
        // Not recursive: findings not fixed yet wait in a subfolder.
        for (const QString &name : folder.entryList(QDir::Files, QDir::Name)) {
            replay(folder.filePath(name));
            ++count;
        }
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1; // an empty corpus would make this test pass for nothing
}
