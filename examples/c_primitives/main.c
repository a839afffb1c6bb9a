/* The primitive layer from C: select the bodies for this processor, then copy, threshold and
 * mirror a small gray picture and take its mean, printing each result.
 *
 *   cc -std=c99 main.c $(pkg-config --cflags --libs nuv_cv) -o primitives */
#include <nuv/primitives.h>

#include <stdio.h>

enum { W = 6, H = 4 };

static void show(char const* title, Ipp8u const* pixels, int step) {
    int x, y;
    printf("%s\n", title);
    for (y = 0; y < H; ++y) {
        for (x = 0; x < W; ++x) printf(" %3d", pixels[y * step + x]);
        printf("\n");
    }
}

static int check(char const* call, IppStatus status) {
    if (status != ippStsNoErr) fprintf(stderr, "%s: status %d\n", call, status);
    return status == ippStsNoErr;
}

int main(void) {
    IppiSize const size = {W, H};
    /* ippMalloc gives 64-byte aligned rows; a step of 64 pads each row of 6 pixels. */
    int const step = 64;
    Ipp8u* source = (Ipp8u*)ippMalloc(step * H);
    Ipp8u* result = (Ipp8u*)ippMalloc(step * H);
    Ipp64f mean = 0;
    IppStatus status;
    int x, y, ok;
    if (!source || !result) return 1;

    /* A warning (a vendor other than the one the selection knows, say) leaves the choice valid. */
    status = ippInit();
    printf("ippInit: status %d, slot %u\n", status, ippJumpIndexForMergedLibs);
    for (y = 0; y < H; ++y)
        for (x = 0; x < W; ++x) source[y * step + x] = (Ipp8u)(10 * (y * W + x));
    show("source", source, step);

    ok = check("ippiCopy_8u_C1R", ippiCopy_8u_C1R(source, step, result, step, size));
    show("copy", result, step);
    ok = ok && result[3 * step + 5] == 230;
    /* Every pixel above 100 becomes 255. */
    ok = ok && check("ippiThreshold_GTVal_8u_C1R",
                     ippiThreshold_GTVal_8u_C1R(source, step, result, step, size, 100, 255));
    show("threshold above 100 to 255", result, step);
    ok = ok && result[step + 4] == 100 && result[step + 5] == 255;
    /* Flip 1: columns swap left to right. */
    ok = ok && check("ippiMirror_8u_C1R", ippiMirror_8u_C1R(source, step, result, step, size, 1));
    show("mirrored left to right", result, step);
    ok = ok && check("ippiMean_8u_C1R", ippiMean_8u_C1R(source, step, size, &mean));
    printf("mean %.1f\n", mean);

    ok = ok && result[0] == 50 && result[step + 5] == 60 && mean == 115.0;
    ippFree(source);
    ippFree(result);
    if (!ok) fprintf(stderr, "unexpected result\n");
    return ok ? 0 : 1;
}
