// Prints the interfaces that tools/make-interop has written: name, identifier, and methods in the order of their table.
using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

static class Interfaces
{
    static void Main()
    {
        foreach (Type type in typeof(VetrelCorvaneLib.IAbout).Assembly.GetTypes())
        {
            if (!type.IsInterface || type.GetCustomAttribute<CoClassAttribute>() != null) continue;
            var methods = type.GetMethods().OrderBy(each => each.MetadataToken).Select(each => each.Name);
            Console.WriteLine(type.Name + " " + type.GUID + " " + string.Join(" ", methods));
        }
    }
}
