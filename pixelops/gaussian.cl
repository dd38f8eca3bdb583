// Gaussian blur of images, in passes; mirrors pixelops/blur.h. What a pass reads is the sum of two images, the second one
// times a share. Passes along lines work in both directions, which the next pass adds up.

_Pragma("OPENCL FP_CONTRACT OFF")

const sampler_t gaussian_edge = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;

float4 gaussian_sum(__read_only image2d_t first, __read_only image2d_t second, float share, int2 at)
{
    const float4 c = read_imagef(first, gaussian_edge, at);
    return share == 0.0f ? c : c + share * read_imagef(second, gaussian_edge, at);
}

// Items below the number of lines run forwards, the others backwards. Each section: n0, n1, m1, m2, d1, d2, and the
// start of each direction; see there.
void gaussian_line(__read_only image2d_t first, __read_only image2d_t second, float share,
                   __write_only image2d_t forward, __write_only image2d_t backward, int line, int length, int lines,
                   int2 step, float8 one, float8 two)
{
    const int back = line >= lines;
    const int2 start = (back ? line - lines : line) * (int2)(step.y, step.x) + (back ? (length - 1) * step : (int2)(0));
    const int2 way = back ? -step : step;
    const float4 edge = gaussian_sum(first, second, share, start);
    float4 x1 = edge, x2 = edge;
    float4 a1 = edge * (back ? one.s7 : one.s6), a2 = a1, b1 = edge * (back ? two.s7 : two.s6), b2 = b1;
    for (int i = 0; i < length; ++i) {
        const int2 at = start + i * way;
        const float4 x = gaussian_sum(first, second, share, at);
        const float4 a = (back ? one.s2 * x1 + one.s3 * x2 : one.s0 * x + one.s1 * x1) - one.s5 * a2 - one.s4 * a1;
        const float4 b = (back ? two.s2 * x1 + two.s3 * x2 : two.s0 * x + two.s1 * x1) - two.s5 * b2 - two.s4 * b1;
        if (back) {
            write_imagef(backward, at, a + b);
        } else {
            write_imagef(forward, at, a + b);
        }
        x2 = x1, x1 = x, a2 = a1, a1 = a, b2 = b1, b1 = b;
    }
}

__kernel void k3b1e9f7c20(__read_only image2d_t first, __read_only image2d_t second, float share,
                          __write_only image2d_t forward, __write_only image2d_t backward, int width, int height,
                          float8 one, float8 two)
{
    gaussian_line(first, second, share, forward, backward, get_global_id(0), height, width, (int2)(0, 1), one, two);
}

__kernel void k3b1e9f7c21(__read_only image2d_t first, __read_only image2d_t second, float share,
                          __write_only image2d_t forward, __write_only image2d_t backward, int width, int height,
                          float8 one, float8 two)
{
    gaussian_line(first, second, share, forward, backward, get_global_id(0), width, height, (int2)(1, 0), one, two);
}

// Small amounts: the weighted sum itself, along one axis. w: the weight of the pixel and of its neighbours at 1 to 7.
__kernel void k3b1e9f7c22(__read_only image2d_t first, __read_only image2d_t second, float share,
                          __write_only image2d_t dst, int width, int height, int2 step, float8 w)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    const float weights[8] = {w.s0, w.s1, w.s2, w.s3, w.s4, w.s5, w.s6, w.s7};
    const int2 last = (int2)(width - 1, height - 1);
    float4 sum = weights[0] * gaussian_sum(first, second, share, at);
    for (int k = 1; k < 8 && weights[k] != 0.0f; ++k)
        sum += weights[k] * (gaussian_sum(first, second, share, max(at - k * step, 0)) +
                             gaussian_sum(first, second, share, min(at + k * step, last)));
    write_imagef(dst, at, sum);
}
