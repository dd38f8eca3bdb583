// The colour corrector; mirrors the CPU, whose table it replaces by arithmetic at the same steps of luma.
// p: three wheels of angle and magnitude (0 to 5), offset (6), gain (8), saturation (9), and the tone curve's
// exponent (a), threshold (b), offset (c), slope (d) and scale (e).

_Pragma("OPENCL FP_CONTRACT OFF")

// The tone curve for x >= 0.
float tone_curve(float x, float16 p)
{
    if (x < p.sb) return x * p.sd;
    return p.sa > 1.0f ? pow((p.sc + x) * p.se, p.sa) : pow(x, p.sa) * (p.sc + 1.0f) - p.sc;
}

// One wheel's push of (u, v), in 8-bit codes like luma.
float2 wheel_push(float2 wheel, float luma, float center, float narrowness)
{
    const float away = luma - center, angle = wheel.x * 0.0174532925f;
    const float weight = exp(-narrowness * away * away) * wheel.y * wheel.y;
    return 127.5f * weight * (float2)(cos(angle), sin(angle));
}

float2 push_at(float luma, float16 p)
{
    const float2 push = wheel_push(p.s01, luma, 0.0f, 9.518927955800229e-5f)
                      + wheel_push(p.s23, luma, 127.5f, 0.00026399289035467123f)
                      + wheel_push(p.s45, luma, 255.0f, 9.518927955800229e-5f);
    const float square = dot(push, push);
    return square < 26244.0f ? push : push * (162.0f / sqrt(square));
}

__kernel void kf224af560(__read_only image2d_t src, __write_only image2d_t dst, float16 p, int tone, int saturation,
                         int wheels, int stages, int width, int height)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up

    float4 c = read_imagef(src, nearest, at);
    if (stages == 0) {
        write_imagef(dst, at, c);
        return;
    }
    // Bytes as codes, so that luma falls on the CPU's steps.
    const int bytes = get_image_channel_data_type(src) == CLK_UNORM_INT8;
    const float white = bytes ? 255.0f : 1.0f;
    if (bytes) c = rint(c * 255.0f);
    // The first component in memory counts as blue.
    const int blue_first = get_image_channel_order(src) == CLK_BGRA;
    const float3 m = blue_first ? c.zyx : c.xyz;

    float luma = 0.587f * m.y + 0.299f * m.z + 0.114f * m.x;
    float u = (m.x - luma) * 0.492f, v = (m.z - luma) * 0.877f;
    if (tone || wheels) {
        float code = rint(fmin(fmax(luma * (1020.0f / white), 0.0f), 1023.0f)) * 0.25f;
        if (tone) code = clamp((tone_curve(code / 255.0f, p) * p.s8 + p.s6) * 255.0f, 0.0f, 255.0f);
        luma = code * (white / 255.0f);
        if (wheels) {
            const float2 push = push_at(code, p) * (white / 255.0f);
            u += push.x;
            v += push.y;
        }
    }
    if (saturation) {
        u *= p.s9;
        v *= p.s9;
    }
    float3 result = (float3)(luma + 2.0325203f * u, luma - 0.39473134f * u - 0.5808092f * v, luma + 1.1402509f * v);
    result = fmin(fmax(result, 0.0f), c.w);
    if (bytes) result = rint(result);
    write_imagef(dst, at, (float4)(blue_first ? result.zyx : result, c.w) / white);
}
