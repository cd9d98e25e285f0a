// Logs the first two lines of a process.
#include <QVFoundation/QVLibrary.h>

int main() {
    QVLog(L"first");
    QVLog(L"second");
}
