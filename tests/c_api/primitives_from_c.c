/* Compiled as C99: the primitive header must serve a C host, and a copy through the stub
 * must give the source bytes. */
#include <nuv/primitives.h>

#include <stdio.h>
#include <string.h>

int main(void) {
    Ipp8u src[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    Ipp8u dst[12];
    IppiSize size = {4, 3};
    IppStatus status;
    memset(dst, 0, sizeof dst);
    status = ippiCopy_8u_C1R(src, 4, dst, 4, size);
    if (status != ippStsNoErr || memcmp(src, dst, sizeof dst) != 0) {
        fprintf(stderr, "copy through the stub failed: status %d\n", status);
        return 1;
    }
    if (ippiCopy_8u_C1R(NULL, 4, dst, 4, size) != ippStsNullPtrErr) {
        fprintf(stderr, "a null source was not refused\n");
        return 1;
    }
    return 0;
}
