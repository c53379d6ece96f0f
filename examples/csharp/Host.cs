// A host in C#: lists the devices that the plug-in finds, each with its ports.
//
// The system finds the plug-in by its name, zotavpci.so or zotavpci.dll: on Linux with its folder in
// LD_LIBRARY_PATH, on Windows beside the program, where zopcibrd.dll belongs as well.
using System;
using System.Runtime.InteropServices;
using System.Text;

static class Plugin
{
    const string Library = "zotavpci";
    const CallingConvention C = CallingConvention.Cdecl;
    const int TextSize = 256;

    public const int NotSupported = -388804;
    public const uint Bus = 0x01000200, Device = 0x01000300,
        Function = 0x01000400, PortCount = 0x01000600, PortBus = 0x01000700,
        PortLinkWidth = 0x01000B00;
    public const uint Model = 0x02000100, Label = 0x02000400, Name = 0x02000500;

    [DllImport(Library, CallingConvention = C)]
    static extern int tavPlugin_initialize();
    [DllImport(Library, CallingConvention = C)]
    static extern void tavPlugin_finalize();
    [DllImport(Library, CallingConvention = C)]
    static extern int tavPlugin_getDeviceCount(out uint count);
    [DllImport(Library, CallingConvention = C)]
    static extern int tavPlugin_getDeviceAttributeI32(uint index, uint attribute, out int value);
    [DllImport(Library, CallingConvention = C)]
    static extern int tavPlugin_getDeviceAttributeUTF8(uint index, uint attribute, byte[] buffer);

    public static void Initialize()
    {
        Check("looking for devices", tavPlugin_initialize());
    }

    public static void Release()
    {
        tavPlugin_finalize();
    }

    public static uint Count()
    {
        uint count;
        Check("counting devices", tavPlugin_getDeviceCount(out count));
        return count;
    }

    // Null where the device does not carry the attribute. An attribute of ports takes the port's
    // index, 0 to 255, added.
    public static int? Integer(uint device, uint attribute)
    {
        int value;
        int status = tavPlugin_getDeviceAttributeI32(device, attribute, out value);
        if (status == NotSupported)
            return null;
        Check("reading an attribute", status);
        return value;
    }

    public static string Text(uint device, uint attribute)
    {
        byte[] buffer = new byte[TextSize];
        Check("reading a text", tavPlugin_getDeviceAttributeUTF8(device, attribute, buffer));
        return Encoding.UTF8.GetString(buffer, 0, Array.IndexOf(buffer, (byte)0));
    }

    static void Check(string doing, int status)
    {
        if (status < 0)
            throw new InvalidOperationException(
                string.Format("{0}: status {1} (0x{1:X8}): {2}", doing, status, Words(status)));
    }

    static string Words(int status)
    {
        switch (status)
        {
            case -388801: return "an internal fault, or there is no list of devices";
            case -388802: return "an unknown attribute, or an index out of range";
            case NotSupported: return "this device does not carry the attribute";
            case -52003: return "no configuration: the key with Path and ConfigPath is missing";
            case -52005: return "the bridge library could not be loaded, or lacks a function";
            default: return "tavPlugin.h lists the others";
        }
    }
}

static class Host
{
    static void PrintDevice(uint device)
    {
        Console.WriteLine("{0}: {1} at {2:x2}:{3:x2}.{4:x}", Plugin.Text(device, Plugin.Name),
            Plugin.Text(device, Plugin.Model), Plugin.Integer(device, Plugin.Bus),
            Plugin.Integer(device, Plugin.Device), Plugin.Integer(device, Plugin.Function));
        int ports = Math.Min(Plugin.Integer(device, Plugin.PortCount) ?? 0, 256);
        for (uint port = 0; port < ports; ++port)
        {
            int? width = Plugin.Integer(device, Plugin.PortLinkWidth + port);
            Console.WriteLine("  port {0}: bus {1:x2}{2}", Plugin.Text(device, Plugin.Label + port),
                Plugin.Integer(device, Plugin.PortBus + port), width == null ? "" : ", x" + width);
        }
    }

    static int Main()
    {
        try
        {
            Plugin.Initialize();
            try
            {
                uint count = Plugin.Count();
                Console.WriteLine("{0} devices", count);
                for (uint device = 0; device < count; ++device)
                    PrintDevice(device);
            }
            finally
            {
                Plugin.Release();
            }
            return 0;
        }
        catch (Exception failure) when (failure is InvalidOperationException ||
                                        failure is DllNotFoundException ||
                                        failure is EntryPointNotFoundException ||
                                        failure is BadImageFormatException)
        {
            Console.Error.WriteLine("{0}: {1}", failure.GetType().Name, failure.Message);
            return 1;
        }
    }
}
