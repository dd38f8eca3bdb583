// Brightness and contrast; mirrors byteTable and Tone of the CPU. p: brightness, contrast, centre.

_Pragma("OPENCL FP_CONTRACT OFF")

// 1 / (limit - contrast) without losing the difference near contrast 1; beyond is limit - 1.
float contrast_factor(float contrast, float beyond)
{
    return contrast > 0.0f ? 1.0f / ((1.0f - contrast) + beyond) : contrast + 1.0f;
}

float4 with_straight(float4 c, float3 straight)
{
    return c.w < 1.0f ? (float4)(straight * c.w, c.w) : (float4)(straight, 1.0f);
}

float3 straight_of(float4 c) { return c.w < 1.0f ? c.xyz / c.w : c.xyz; }

// Bytes: the CPU's table, on the stored values, truncated, limited to alpha.
float4 tone_bytes(float4 c, float4 p)
{
    const float k = contrast_factor(p.y, 1e-7f);
    const float3 level = ((c.xyz + p.x - p.z) * k + p.z) * 255.0f;
    return (float4)(fmin(floor(clamp(level, 0.0f, 255.0f)) / 255.0f, c.w), c.w);
}

float4 tone_floats(float4 c, float4 p)
{
    const float k = contrast_factor(p.y, 1e-6f);
    const int shifts = fabs(p.x) > 1e-6f, scales = fabs(p.y) > 1e-6f;
    if ((shifts || scales) && c.w <= 1e-6f) return (float4)(0.0f);
    if (shifts) c = with_straight(c, straight_of(c) + p.x);
    if (scales) c = with_straight(c, (straight_of(c) - p.z) * k + p.z);
    return c;
}

__kernel void kdd97a7f20(__read_only image2d_t src, __write_only image2d_t dst, int width, int height, float4 p)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up

    float4 c = read_imagef(src, nearest, at);
    if (fabs(p.x) > 1e-6f || fabs(p.y) > 1e-6f)
        c = get_image_channel_data_type(dst) == CLK_UNORM_INT8 ? tone_bytes(c, p) : tone_floats(c, p);
    write_imagef(dst, at, c);
}
