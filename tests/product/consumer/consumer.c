/* The smallest program that needs the library's code: an object is made, counted and given back. */
#include <stdio.h>

#include <QVFoundation/QVFoundation.h>

int main(void) {
    void* object = NULL;
    int right = 0;
    QVFoundationInit();
    object = QVNullCreate();
    right = QVGetTypeID(object) == QVTypeIDNull && QVGetRetainCount(object) == 1;
    QVRelease(object);
    QVFoundationExit();
    puts(right ? "the installed copy works" : "the installed copy does not work");
    return right ? 0 : 1;
}
